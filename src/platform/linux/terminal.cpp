#include <unistd.h>

#include "platform/platform.h"

namespace quirkmeter::platform {

bool OnTerminal(int stream) {
    return isatty(stream) == 1;
}

void CloseOwnConsole() {}

}  // namespace quirkmeter::platform
