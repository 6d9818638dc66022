// The visible part of a window of this layer, which is otherwise only a name.
#pragma once

#include <gtk/gtk.h>

namespace quirkmeter::platform {

/// A minimised window in the task bar; nothing without a display. Closing it requests the end of the
/// process, as a termination signal does.
class TaskBarEntry {
   public:
    explicit TaskBarEntry(const char* title);
    ~TaskBarEntry();
    TaskBarEntry(const TaskBarEntry&) = delete;

    /// Handles the desktop's events since the last call.
    void Serve();

   private:
    GtkWidget* window_ = nullptr;
};

}  // namespace quirkmeter::platform
