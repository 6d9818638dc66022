// The whole changing state of the program, whichever room holds it.
#pragma once

namespace quirkmeter {

/// Puts everything back to how it is before start-up. The link's objects are released, not
/// forgotten; the main window and the platform stay as they are.
void ResetProgramState();

}  // namespace quirkmeter
