// The main window where there is none.
#pragma once

#include <string>

#include "model/main_window.h"

namespace quirkmeter::torture {

struct NoWindow final : MainWindow {
    void RefreshSubsystems() override {}
    void SetStatusCaption(const std::string&) override {}
    void SetSubSystemsHeading(const std::string&) override {}
    void ShowSubsystemList(bool) override {}
    platform::WindowHandle Handle() const override { return 0; }
    void Unload() override {}
    void ShowMessage(const std::string&, MessageIcon) override {}
};

}  // namespace quirkmeter::torture
