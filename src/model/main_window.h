// The interface through which the lower rooms call the main window. frmMain implements it, a test
// replaces it.
#pragma once

#include <string>

#include "platform/platform.h"

namespace quirkmeter {

inline constexpr char ProgramTitle[] = "FS2002 Quirkmeter";

enum class MessageIcon { None, Warning };

class MainWindow {
   public:
    /// Refills the sub-system list.
    virtual void RefreshSubsystems() = 0;
    virtual void SetStatusCaption(const std::string& caption) = 0;
    virtual void SetSubSystemsHeading(const std::string& heading) = 0;
    virtual void ShowSubsystemList(bool show) = 0;
    /// The window's handle, the owner of anything that the system shows in front of it.
    virtual platform::WindowHandle Handle() const = 0;
    /// Runs the whole closing sequence and ends the program, at the latest once the caller has
    /// returned.
    virtual void Unload() = 0;
    /// A message box with an OK button and the program's title; returns when the user closed it.
    virtual void ShowMessage(const std::string& text, MessageIcon icon) = 0;

   protected:
    ~MainWindow() = default;
};

/// Set by the main window before anything below calls it.
inline MainWindow* TheMainWindow = nullptr;

}  // namespace quirkmeter
