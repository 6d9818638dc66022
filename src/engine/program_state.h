// The whole changing state of the program, in all rooms.
#pragma once

namespace quirkmeter {

/// Resets everything to the state before start-up, and releases the link's objects. The main window
/// and the platform stay as they are.
void ResetProgramState();

}  // namespace quirkmeter
