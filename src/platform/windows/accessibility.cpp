#include <windows.h>

#include "platform/platform.h"

namespace quirkmeter::platform {

// The scale of the display is that of its texts, too.
double TextScale() {
    return 1;
}

// The system takes the label made before a control for its name, and reads rows by itself. Of what it
// does not know it reads the window's text.
void Describe(WindowHandle control, ControlKind kind, const std::wstring& name,
              const std::wstring& shown) {
    if (kind == ControlKind::Native || kind == ControlKind::List) return;
    ::SetWindowTextW(reinterpret_cast<HWND>(control), (name + L": " + shown).c_str());
}

}  // namespace quirkmeter::platform
