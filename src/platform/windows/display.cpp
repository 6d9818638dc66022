#include "platform/platform.h"

namespace quirkmeter::platform {

void PreferX11() {}

void WhenDisplayIsLost(const std::function<void()>&) {}

void ShowWarningIcons() {}

void EdgeOnDarkGround(WindowHandle) {}

}  // namespace quirkmeter::platform
