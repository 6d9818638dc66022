#include "platform/linux/task_bar.h"

#include <gtk/gtk.h>

#include <csignal>

#include "platform/platform.h"

namespace quirkmeter::platform {

TaskBarEntry::TaskBarEntry(const char* title) {
    PreferX11();
    if (!gtk_init_check(nullptr, nullptr)) return;
    window_ = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_title(GTK_WINDOW(window_), title);
    gtk_window_iconify(GTK_WINDOW(window_));
    auto close = +[]() -> gboolean {
        std::raise(SIGTERM);
        return TRUE;
    };
    g_signal_connect(window_, "delete-event", G_CALLBACK(close), nullptr);
    gtk_widget_show(window_);
    Serve();
}

TaskBarEntry::~TaskBarEntry() {
    if (!window_) return;
    gtk_widget_destroy(window_);
    Serve();
}

void TaskBarEntry::Serve() {
    while (window_ && gtk_events_pending()) gtk_main_iteration();
}

}  // namespace quirkmeter::platform
