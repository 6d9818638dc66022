// What the desktop shows of a window that is otherwise only a name to be found.
#pragma once

#include <gtk/gtk.h>

namespace quirkmeter::platform {

/// A minimised window in the task bar; where there is no display, nothing. Closing it is taken for a
/// termination signal to the process.
class TaskBarEntry {
   public:
    explicit TaskBarEntry(const char* title);
    ~TaskBarEntry();
    TaskBarEntry(const TaskBarEntry&) = delete;

    /// Does what the desktop has asked of it since the last call.
    void Serve();

   private:
    GtkWidget* window_ = nullptr;
};

}  // namespace quirkmeter::platform
