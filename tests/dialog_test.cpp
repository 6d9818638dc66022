// The dialogs of the main window.
#include "ui/frm_options.h"
#include "ui/frm_settings.h"
#include "window_fixture.h"

namespace quirkmeter {

namespace {

TEST_F(WindowTest, ReliabilityListsHoldEachOther) {
    ClickRow(1, [this](frmReliability* dialog) {
        EXPECT_EQ(dialog->cboRelLeft->GetCount(), 101u);
        EXPECT_EQ(dialog->cboRelRight->GetCount(), 1000u);
        EXPECT_EQ(dialog->cboHours->GetCount(), 1009u);
        EXPECT_EQ(dialog->cboHours->GetString(9), "0.9");
        EXPECT_EQ(dialog->cboHours->GetString(10), "1");
        EXPECT_EQ(dialog->cboRelRight->GetString(999), "000");
        dialog->cboRelRight->Pick("500");
        EXPECT_EQ(dialog->cboRelRight->GetValue(), "000") << "no more than 100";
        dialog->cboRelLeft->Pick("99");
        EXPECT_EQ(dialog->cboRelRight->GetValue(), "999");
        dialog->cboRelLeft->Pick("0");
        EXPECT_EQ(dialog->cboRelRight->GetValue(), "000");
        dialog->cboRelRight->Pick("001");
        Type(dialog->cboRelLeft, "0");  // picked already
        dialog->cboHours->Pick("0.5");
        Click(dialog->cmdAccept);
    });
    EXPECT_EQ(Row(1), "yellow Airspeed|0.001%|0.5 hours of flight|No");

    // What an entry holds, shows, and holds when that is accepted.
    struct {
        const char *Reliability, *Hours, *Shown, *Accepted;
    } rows[] = {{"99.999", "0.5", "99.999 0.5", "99.999%|0.5 hours of flight|No"},
                {"99.5", "0", "99.500 0.0", "99.5%|0 hours of flight|No"},
                {"0", "999", "0.000 999", "0%|999 hours of flight|No"},
                {"99.9999", "0.04", "100.000 0.0", "100%|0 hours of flight|Never"},
                {"50", "0.9", "50.000 0.9", "50%|0.9 hours of flight|No"},
                {"50", "0.97", "50.000 1", "50%|1 hour of flight|No"},
                {"50", "12.4", "50.000 12", "50%|12 hours of flight|No"}};
    for (const auto& row : rows) {
        Catalogue[1][1].Reliability = row.Reliability;
        Catalogue[1][1].Hours = row.Hours;
        WhenOpen<frmReliability>([&, this](frmReliability* dialog) {
            EXPECT_EQ(dialog->cboRelLeft->GetValue() + "." + dialog->cboRelRight->GetValue() + " " +
                          dialog->cboHours->GetValue(),
                      row.Shown);
            Key(WXK_RETURN);
        });
        Key(WXK_RETURN);
        EXPECT_THAT(Row(1), testing::EndsWith(std::string("Airspeed|") + row.Accepted));
    }
}

TEST_F(WindowTest, PickListTakesLettersAndLeavesAccessKeysAlone) {
    Catalogue[1][1].Reliability = "50.25";
    ClickRow(1, [this](frmReliability* dialog) {
        Open(dialog->cboRelLeft);
        Key(WXK_RETURN);  // what is picked already
        EXPECT_TRUE(Until([dialog] { return !dialog->cboRelLeft->IsPopupShown(); }));
        EXPECT_EQ(dialog->cboRelRight->GetValue(), "250");
        Key(WXK_ESCAPE);
    });
    ClickRow(1, [this](frmReliability* dialog) {
        Type(dialog->cboHours, "24");
        Key('A', wxMOD_ALT);
    });
    EXPECT_EQ(Row(1), "yellow Airspeed|50.25%|24 hours of flight|No");
}

class FileDialogTest : public WindowTest {
   protected:
    FileDialogTest() {
        modals_.Meanwhile = [this](auto*) { Tick(); };
    }

    std::string Path(const char* name) { return (folder_ / name).string(); }

    // Presses the button and types the file's name into the dialog, which shows the test's folder
    // and the name chosen last; none cancels it.
    void ChooseFile(wxButton* button, const std::string& name, const char* last = "") {
        WhenOpen<wxFileDialog>([=, this](wxFileDialog* dialog) {
            EXPECT_EQ(dialog->GetMessage(), "") << "the title is the system's own";
            EXPECT_EQ(dialog->GetWildcard(), "FS2002 Quirkmeter Profile (*.qmp)|;*.qmp");
            EXPECT_EQ(dialog->wxFileDialogBase::GetFilename(), last);
            auto shows = [dialog](const std::string& file) {
                return [=] { return native::ShowsFile(dialog, file); };
            };
            EXPECT_TRUE(Until(shows(last)));
            Tick();
            if (name.empty()) {
                Key(WXK_ESCAPE);
                return;
            }
            native::TypeFileName(Hands(), name);
            EXPECT_TRUE(Until(shows(name)));
            // It may still be busy with what was typed.
            long patience = 10;
            do native::Accept(Hands(), dialog);
            while (!Until([dialog] { return !dialog->IsShown(); }, patience *= 2) &&
                   patience < 30'000);
        });
        Click(button);
    }
};

TEST_F(FileDialogTest, ProfilesAreSavedAndOpenedUnderTheNameGiven) {
    Catalogue[1][3].Reliability = "12.5";
    ChooseFile(main_->cmdSaveAs, "a&b");
    EXPECT_EQ(Heading(), "Sub-systems (a&b)");
    Catalogue[1][3].Reliability = "100";
    ChooseFile(main_->cmdOpen, "", "a&b");
    EXPECT_EQ(Catalogue[1][3].Reliability, "100");
    ChooseFile(main_->cmdOpen, "a&b", "a&b");
    EXPECT_EQ(Row(3), "yellow Approach|12.5%|1 hour of flight|No");
    EXPECT_EQ(Settings.LastProfile, Path("a&b"));
    EXPECT_THAT(modals_.TakeMessages(), IsEmpty());

    WriteFile("b", "1#1#50");
    ChooseFile(main_->cmdOpen, "b", "a&b");
    EXPECT_THAT(modals_.TakeMessages(), ElementsAre("! Could not read " + Path("b")));
    EXPECT_EQ(Settings.LastProfile, "");
    EXPECT_EQ(Heading(), "Sub-systems (a&b)");
    inprocess::FailCalls("ReplaceFile", 1, 1, 0);
    ChooseFile(main_->cmdSaveAs, "a&b", "b");  // over the old one, without a question
    EXPECT_THAT(modals_.TakeMessages(), ElementsAre("! Could not write " + Path("a&b")));
    EXPECT_EQ(Settings.LastProfile, Path("a&b"));

    // A name in letters that Windows' code page has not.
    inprocess::FailCalls("HoldsPath", 1, 2, 0);
    for (wxButton* button : {main_->cmdSaveAs, main_->cmdOpen}) ChooseFile(button, "f", "a&b");
    EXPECT_EQ(Settings.LastProfile, Path("a&b"));
    EXPECT_THAT(modals_.TakeMessages(),
                ElementsAre("! Could not write " + Path("f"), "! Could not read " + Path("f")));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "f"));
}

// The dialog reads its own point whatever the regional settings; everything else shows a comma.
TEST_F(FileDialogTest, CommaRoundTrip) {
    inprocess::SetDecimalSeparator(',');
    ClickRow(1, [this](frmReliability* dialog) {
        dialog->cboRelLeft->SetStringSelection("99");
        dialog->cboRelRight->SetStringSelection("250");
        dialog->cboHours->SetStringSelection("0.5");
        Click(dialog->cmdAccept);
    });
    const char* row = "yellow Airspeed|99,25%|0,5 hours of flight|No";
    EXPECT_EQ(Row(1), row);
    ChooseFile(main_->cmdSaveAs, "h");
    EXPECT_TRUE(ReadFile("h").starts_with("1#1#99,25#0,5\r\n"));
    Close();
    Open();
    EXPECT_EQ(Row(1), row);
    EXPECT_EQ(Heading(), "Sub-systems (h)");
    ClickRow(1, [this](frmReliability* dialog) {
        EXPECT_EQ(dialog->cboRelRight->GetValue(), "250");
        EXPECT_EQ(dialog->cboHours->GetValue(), "0.5");
        Click(dialog->cmdAccept);
    });
    EXPECT_EQ(Row(1), row);
}

TEST_F(WindowTest, OptionsLeadToHelpAndSettings) {
    WriteFile("Quirkmeter.htm", "");
    WhenOpen<frmOptions>([this](frmOptions* dialog) {
        Key(WXK_RETURN);  // the default button
        std::vector<inprocess::ShellRun> runs;
        EXPECT_TRUE(Until([&runs] { return !(runs = inprocess::TakeShellRuns()).empty(); }));
        EXPECT_THAT(runs,
                    ElementsAre(inprocess::ShellRun{"Open", (folder_ / "Quirkmeter.htm").string(),
                                                    "0", "0", platform::ShowNormal}));
        EXPECT_TRUE(dialog->IsModal()) << "stays open";
        Key(WXK_ESCAPE);
    });
    Click(main_->cmdOptions);
}

class SettingsWindowTest : public WindowTest {
   protected:
    // Works the settings dialog through the options dialog.
    void Edit(const std::function<void(frmSettings*)>& act) {
        WhenOpen<frmOptions>([this, act](frmOptions* options) {
            WhenOpen<frmSettings>(act);
            Click(options->cmdSettings);
        });
        Click(main_->cmdOptions);
    }

    // The switches in their order, x for one that is on, and the hotkeys.
    static std::string Shown(frmSettings* dialog) {
        std::string shown;
        for (wxCheckBox* option : {dialog->chkDisplayStatus, dialog->chkDisplayFailures,
                                   dialog->chkPlayFailureSound, dialog->chkHardcoreMode})
            shown += option->GetValue() ? "x" : "-";
        auto add = [&shown](PickList* key, wxCheckBox* ctrl, wxCheckBox* shift) {
            shown += " " + look::Stored(key->GetValue()) + (ctrl->GetValue() ? "+CTRL" : "") +
                     (shift->GetValue() ? "+SHIFT" : "");
        };
        add(dialog->cboStatus, dialog->chkStatusCTRL, dialog->chkStatusSHIFT);
        add(dialog->cboClear, dialog->chkClearCTRL, dialog->chkClearSHIFT);
        add(dialog->cboActive, dialog->ChkActiveCTRL, dialog->chkActiveSHIFT);
        return shown;
    }
};

TEST_F(SettingsWindowTest, OkStoresEverything) {
    Edit([this](frmSettings* dialog) {
        EXPECT_EQ(Shown(dialog), "---- None None None");
        EXPECT_EQ(dialog->cboStatus->GetCount(), 37u);
        Click(dialog->chkDisplayStatus);
        dialog->chkPlayFailureSound->SetValue(true);
        Type(dialog->cboStatus, "S");
        Click(dialog->chkStatusCTRL);
        Click(dialog->chkStatusSHIFT);
        dialog->cboClear->SetStringSelection("9");
        dialog->chkClearCTRL->SetValue(true);
        dialog->cboActive->SetStringSelection("0");
        dialog->chkActiveSHIFT->SetValue(true);
        Click(dialog->cmdOK);
    });
    SettingsRecord expected;
    expected.DisplayUpdate = expected.PlayFailureSound = true;
    expected.StatusHotkey = 83;
    expected.StatusHotkeyMods = 3;
    expected.ClearHotkey = 57;
    expected.ClearHotkeyMods = 1;
    expected.ActiveHotkey = 48;
    expected.ActiveHotkeyMods = 2;
    EXPECT_EQ(Settings, expected);
    Edit([this](frmSettings* dialog) {
        EXPECT_EQ(Shown(dialog), "x-x- S+CTRL+SHIFT 9+CTRL 0+SHIFT");
        dialog->chkDisplayFailures->SetValue(true);
        dialog->cboClear->SetStringSelection("None");
        Click(dialog->cmdCancel);
    });
    EXPECT_EQ(Settings, expected) << "cancelled";
    Edit([this](frmSettings* dialog) {
        dialog->chkStatusCTRL->SetValue(false);
        dialog->cboClear->SetStringSelection("None");
        dialog->ChkActiveCTRL->SetValue(true);
        dialog->chkActiveSHIFT->SetValue(false);
        dialog->chkDisplayFailures->SetValue(true);
        dialog->chkPlayFailureSound->SetValue(false);
        Click(dialog->cmdOK);
    });
    Edit([this](frmSettings* dialog) {
        EXPECT_EQ(Shown(dialog), "xx-- S+SHIFT None 0+CTRL");
        dialog->cboStatus->SetStringSelection("None");
        dialog->cboActive->SetStringSelection("None");
        Click(dialog->cmdOK);
    });
    expected = {};
    expected.DisplayUpdate = expected.DisplayFailures = true;
    EXPECT_EQ(Settings, expected);
    Edit([this](frmSettings* dialog) {
        dialog->cboStatus->SetStringSelection("None");
        dialog->cboActive->SetStringSelection("None");
        Click(dialog->cmdOK);
    });
    expected.StatusHotkey = expected.StatusHotkeyMods = 0;
    expected.ActiveHotkey = expected.ActiveHotkeyMods = 0;
    EXPECT_EQ(Settings, expected);
}

TEST_F(SettingsWindowTest, LettersTypedOneAfterAnotherEachPickAKey) {
    Edit([this](frmSettings* dialog) {
        Type(dialog->cboStatus, "AB", "B");
        Key('F', wxMOD_ALT);
        EXPECT_TRUE(Until([dialog] { return dialog->chkDisplayFailures->GetValue(); }));
        EXPECT_EQ(Shown(dialog), "-x-- B None None");
        Click(dialog->cmdCancel);
    });
}

TEST_F(SettingsWindowTest, HardcoreModeIsChosenOnTheGroundOnly) {
    modals_.Meanwhile = [this](wxMessageDialogBase* box) {
        EXPECT_TRUE(dynamic_cast<frmSettings*>(box->GetParent()));
        Tick();
    };
    struct {
        bool Airborne, Chosen;
        const char* Message;
    } rows[] = {{true, false, "Hardcore Mode cannot be enabled while airborne."},
                {false, true, "You must restart Quirkmeter for Hardcore Mode to be enabled."},
                {true, true, "Hardcore Mode cannot be disabled while airborne."},
                {false, false, "You must restart Quirkmeter for Hardcore Mode to be disabled."}};
    bool display = false;
    for (const auto& row : rows) {
        EngineState.Airborne = row.Airborne;
        Edit([this](frmSettings* dialog) {
            dialog->chkHardcoreMode->SetValue(!dialog->chkHardcoreMode->GetValue());
            dialog->chkDisplayFailures->SetValue(!dialog->chkDisplayFailures->GetValue());
            Key(WXK_RETURN);
        });
        EXPECT_EQ(Settings.HardcoreMode, row.Chosen);
        EXPECT_EQ(Settings.DisplayFailures, display = !display)
            << "the rest is stored all the same";
        EXPECT_FALSE(Settings.HardcoreActive);
        EXPECT_THAT(modals_.TakeMessages(), ElementsAre(row.Message));
    }
}

}  // namespace

}  // namespace quirkmeter
