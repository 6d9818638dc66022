// The display that a program's windows are on.
#include <X11/Xlib.h>
#include <gtk/gtk.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string_view>
#include <utility>

#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

std::function<void()> EndProgram;

[[noreturn]] void End() {
    EndProgram();
    std::_Exit(EXIT_FAILURE);
}

// GDK calls _exit() when it has lost the compositor. Nothing comes before that but a message, one of
// "Error reading events from display", "Error flushing display" and "Error ... dispatching to Wayland
// display".
bool TellsOfLostDisplay(const GLogField& field) {
    if (field.key != std::string_view("MESSAGE")) return false;
    std::string_view text(static_cast<const char*>(field.value));
    return text.starts_with("Error ") && text.find("display") != text.npos;
}

GLogWriterOutput WriteLog(GLogLevelFlags level, const GLogField* fields, gsize count, void* data) {
    g_log_writer_default(level, fields, count, data);
    if (level & G_LOG_LEVEL_MESSAGE && std::any_of(fields, fields + count, TellsOfLostDisplay))
        End();
    return G_LOG_WRITER_HANDLED;
}

}  // namespace

// GDK tries these in order, or the backends in GDK_BACKEND if the user has set it.
void PreferX11() {
    gdk_set_allowed_backends("x11,*");
}

void WhenDisplayIsLost(std::function<void()> end) {
    if (!EndProgram) g_log_set_writer_func(WriteLog, nullptr, nullptr);  // allowed only once
    EndProgram = std::move(end);
    XSetIOErrorHandler([](Display*) -> int { End(); });
}

}  // namespace quirkmeter::platform
