#include "platform/platform.h"

namespace quirkmeter::platform {

void PreferX11() {}

}  // namespace quirkmeter::platform
