// The display that a program's windows are on.
#include <gtk/gtk.h>

#include "platform/platform.h"

namespace quirkmeter::platform {

// GDK tries these in order, or the backends in GDK_BACKEND if the user has set it.
void PreferX11() {
    gdk_set_allowed_backends("x11,*");
}

}  // namespace quirkmeter::platform
