// The display that a program's windows are on.
#include <X11/Xlib.h>
#include <gtk/gtk.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string_view>

#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

std::function<void()> EndProgram;

[[noreturn]] void End() {
    EndProgram();
    std::_Exit(EXIT_FAILURE);
}

// GDK calls _exit() when it has lost the compositor, after a message: "Error reading events from
// display", "Error flushing display" or "Error ... dispatching to Wayland display".
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

gboolean AddWarningIcon(GSignalInvocationHint*, guint, const GValue* shown, gpointer) {
    gpointer widget = g_value_get_object(shown);
    if (!GTK_IS_MESSAGE_DIALOG(widget)) return TRUE;
    GtkMessageType type;
    g_object_get(widget, "message-type", &type, nullptr);
    if (type != GTK_MESSAGE_WARNING) return TRUE;
    GtkWidget* text = gtk_message_dialog_get_message_area(GTK_MESSAGE_DIALOG(widget));
    GtkBox* row = GTK_BOX(gtk_widget_get_parent(text));
    GtkWidget* icon = gtk_image_new_from_icon_name("dialog-warning", GTK_ICON_SIZE_DIALOG);
    gtk_box_pack_start(row, icon, FALSE, FALSE, 0);
    gtk_box_reorder_child(row, icon, 0);
    gtk_widget_show(icon);
    return TRUE;  // also for the next box
}

}  // namespace

// GDK tries these in order, or the backends in GDK_BACKEND if the user has set it.
void PreferX11() {
    gdk_set_allowed_backends("x11,*");
}

void WhenDisplayIsLost(const std::function<void()>& end) {
    if (!EndProgram) g_log_set_writer_func(WriteLog, nullptr, nullptr);  // allowed only once
    EndProgram = end;
    XSetIOErrorHandler([](Display*) -> int { End(); });
}

void ShowWarningIcons() {
    static gulong hook = g_signal_add_emission_hook(g_signal_lookup("show", GTK_TYPE_WIDGET), 0,
                                                    AddWarningIcon, nullptr, nullptr);
    static_cast<void>(hook);
}

void EdgeOnDarkGround(WindowHandle checkBox) {
    static GtkCssProvider* style = [] {
        GtkCssProvider* made = gtk_css_provider_new();
        gtk_css_provider_load_from_data(made, "check { border: 1px solid #c0c0c0; }", -1, nullptr);
        return made;
    }();
    auto* context = gtk_widget_get_style_context(reinterpret_cast<GtkWidget*>(checkBox));
    gtk_style_context_add_provider(context, GTK_STYLE_PROVIDER(style),
                                   GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

}  // namespace quirkmeter::platform
