// Connecting to the simulator, and losing it.
#pragma once

namespace quirkmeter {

/// Opens the link unless it is open; plays the ok sound, or the warning sound unless quiet.
void ConnectToSimulator(bool quiet);

void SetConnected();

/// Also clears all failures silently, which the Hardcore lock prevents.
void SetDisconnected();

}  // namespace quirkmeter
