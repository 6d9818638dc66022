#include <windows.h>

#include "platform/platform.h"

namespace quirkmeter::platform {

// On Windows the display's scale includes that of its texts.
double TextScale() {
    return 1;
}

// Windows names a control after the label created before it, and reads the rows of a list. For other
// controls it reads the window's text.
void Describe(WindowHandle control, ControlKind kind, const std::wstring& name,
              const std::wstring& shown) {
    if (kind == ControlKind::Native || kind == ControlKind::List) return;
    ::SetWindowTextW(reinterpret_cast<HWND>(control), (name + L": " + shown).c_str());
}

}  // namespace quirkmeter::platform
