// The dialogs of the main window.
#include <array>

#include "ui/frm_options.h"
#include "ui/frm_settings.h"
#include "window_fixture.h"

namespace quirkmeter {

namespace {

// The lists limit each other and always use a point, whatever the regional settings.
TEST_F(WindowTest, ReliabilityListsShowAndGiveNumbers) {
    inprocess::SetDecimalSeparator(',');
    ClickRow(1, [this](frmReliability* dialog) {
        EXPECT_EQ(dialog->cboRelLeft->GetCount(), 101u);
        EXPECT_EQ(dialog->cboRelRight->GetCount(), 1000u);
        EXPECT_EQ(dialog->cboHours->GetCount(), 1009u);
        EXPECT_EQ(dialog->cboHours->GetString(9), "0.9");
        EXPECT_EQ(dialog->cboHours->GetString(10), "1");
        EXPECT_EQ(dialog->cboRelRight->GetString(999), "000");
        dialog->cboRelRight->Pick("500");
        EXPECT_EQ(dialog->cboRelRight->GetValue(), "000") << "no more than 100";
        for (auto [left, right] :
             {std::pair{"99", "999"}, {"100", "000"}, {"1", "999"}, {"0", "000"}}) {
            dialog->cboRelLeft->Pick(left);
            EXPECT_EQ(dialog->cboRelRight->GetValue(), right);
        }
        dialog->cboRelRight->Pick("001");
        Type(dialog->cboRelLeft, "0");  // picked already
        dialog->cboHours->Pick("0.5");
        Click(dialog->cmdAccept);
    });
    EXPECT_EQ(Row(1), "yellow Airspeed|0,001%|0,5 hours of flight|No");
    ClickRow(1, [this](frmReliability* dialog) { Click(dialog->cmdAccept); });
    EXPECT_EQ(Row(1), "yellow Airspeed|0,001%|0,5 hours of flight|No");
    inprocess::SetDecimalSeparator('.');

    // The value of an entry, its text, and the value after that text was accepted.
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
        modals_.WhenOpen<frmReliability>([&, this](frmReliability* dialog) {
            EXPECT_EQ(dialog->cboRelLeft->GetValue() + "." + dialog->cboRelRight->GetValue() + " " +
                          dialog->cboHours->GetValue(),
                      row.Shown);
            Key(WXK_RETURN);
        });
        Key(WXK_RETURN);
        EXPECT_THAT(Row(1), testing::EndsWith(std::string("Airspeed|") + row.Accepted));
    }
}

class FileDialogTest : public WindowTest {
   protected:
    FileDialogTest() {
        modals_.Meanwhile = [this](auto*) { Tick(); };
    }

    std::string Path(const char* name) { return (folder_ / name).string(); }

    // Presses the button, checks that the file dialog shows the test's folder and the name chosen
    // last, and types the file's name; without a name, cancels.
    void ChooseFile(wxButton* button, const std::string& name, const char* last = "") {
        Work<wxFileDialog>(button, [=, this](wxFileDialog* dialog) {
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
            native::TypeFileName(Input(), name);
            EXPECT_TRUE(Until(shows(name)));
            // The dialog may still handle the typed keys.
            long patience = 10;
            do native::Accept(Input(), dialog);
            while (!Until([dialog] { return !dialog->IsShown(); }, patience *= 2) &&
                   patience < 30'000);
        });
    }
};

TEST_F(FileDialogTest, ProfilesAreSavedAndOpenedUnderTheNameGiven) {
    Catalogue[1][3].Reliability = "12.5";
    ChooseFile(main_->cmdSaveAs, "a&b");
    EXPECT_EQ(Caption(main_->lblSubSystems), "Sub-systems (a&b)");
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
    EXPECT_EQ(Caption(main_->lblSubSystems), "Sub-systems (a&b)");
    inprocess::FailCalls("ReplaceFile", 1, 1, 0);
    ChooseFile(main_->cmdSaveAs, "a&b", "b");  // over the old one, without a question
    EXPECT_THAT(modals_.TakeMessages(), ElementsAre("! Could not write " + Path("a&b")));
    EXPECT_EQ(Settings.LastProfile, Path("a&b"));

    // The name has letters that Windows' code page lacks.
    inprocess::FailCalls("HoldsPath", 1, 2, 0);
    for (wxButton* button : {main_->cmdSaveAs, main_->cmdOpen}) ChooseFile(button, "f", "a&b");
    EXPECT_EQ(Settings.LastProfile, Path("a&b"));
    EXPECT_THAT(modals_.TakeMessages(),
                ElementsAre("! Could not write " + Path("f"), "! Could not read " + Path("f")));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "f"));
}

TEST_F(WindowTest, OptionsLeadToHelpAndSettings) {
    WriteFile("Quirkmeter.htm", "");
    Work<frmOptions>(main_->cmdOptions, [this](frmOptions* dialog) {
        Key(WXK_RETURN);  // the default button
        std::vector<inprocess::ShellRun> runs;
        EXPECT_TRUE(Until([&runs] { return !(runs = inprocess::TakeShellRuns()).empty(); }));
        EXPECT_THAT(runs,
                    ElementsAre(inprocess::ShellRun{"Open", (folder_ / "Quirkmeter.htm").string(),
                                                    "0", "0", platform::ShowNormal}));
        EXPECT_TRUE(dialog->IsModal()) << "stays open";
        Key(WXK_ESCAPE);
    });
}

class SettingsWindowTest : public WindowTest {
   protected:
    // Opens the settings dialog through the options dialog.
    void Edit(const std::function<void(frmSettings*)>& act) {
        Work<frmOptions>(main_->cmdOptions, [this, act](frmOptions* options) {
            Work<frmSettings>(options->cmdSettings, act);
        });
    }

    static std::array<wxCheckBox*, 4> Switches(frmSettings* dialog) {
        return {dialog->chkDisplayStatus, dialog->chkDisplayFailures, dialog->chkPlayFailureSound,
                dialog->chkHardcoreMode};
    }
    static std::array<frmSettings::HotkeyControls, 3> Hotkeys(frmSettings* dialog) {
        return {dialog->Status, dialog->Clear, dialog->Active};
    }

    // The switches in their order, x when on, and the hotkeys.
    static std::string Shown(frmSettings* dialog) {
        std::string shown;
        for (wxCheckBox* option : Switches(dialog)) shown += option->GetValue() ? "x" : "-";
        for (auto [key, ctrl, shift] : Hotkeys(dialog))
            shown += " " + look::Stored(key->GetValue()) + (ctrl->GetValue() ? "+CTRL" : "") +
                     (shift->GetValue() ? "+SHIFT" : "");
        return shown;
    }
    // Sets the controls to such a text.
    static void Set(frmSettings* dialog, const std::string& shown) {
        std::istringstream words(shown);
        std::string word;
        words >> word;
        for (std::size_t i = 0; i < word.size(); ++i) Switches(dialog)[i]->SetValue(word[i] == 'x');
        for (auto [key, ctrl, shift] : Hotkeys(dialog)) {
            words >> word;
            key->SetStringSelection(word.substr(0, word.find('+')));
            ctrl->SetValue(word.find("+CTRL") != word.npos);
            shift->SetValue(word.find("+SHIFT") != word.npos);
        }
    }
};

TEST_F(SettingsWindowTest, OkStoresEverythingAndCancelNothing) {
    std::string stored = "---- None None None";
    auto edit = [this, &stored](const std::string& shown, wxButton* frmSettings::*button) {
        Edit([&, this](frmSettings* dialog) {
            EXPECT_EQ(Shown(dialog), stored);
            Set(dialog, shown);
            Click(dialog->*button);
        });
    };
    for (const char* shown : {"-x-- S+SHIFT A+SHIFT Z+CTRL", "---- None None None",
                              "x-x- S+CTRL+SHIFT 9+CTRL 0+SHIFT"}) {
        edit("xxx- 1+CTRL 2+SHIFT 3", &frmSettings::cmdCancel);
        edit(shown, &frmSettings::cmdOK);
        stored = shown;
    }
    edit("---- 1 2 3", &frmSettings::cmdCancel);
    Close();
    EXPECT_EQ(ReadFile("Quirkmeter.ini"),
              "LASTPROFILE=\r\nSTATUS_HK=83\r\nSTATUS_HKCS=3\r\nCLEAR_HK=57\r\nCLEAR_HKCS=1\r\n"
              "ACTIVE_HK=48\r\nACTIVE_HKCS=2\r\nDISPLAYUPDATE=YES\r\nPLAYFAILURESOUND=YES\r\n");
}

TEST_F(SettingsWindowTest, CheckBoxesThatAreOffCanBeSeenInADarkTheme) {
    native::PreferDarkTheme(true);
    Edit([this](frmSettings* dialog) {
        for (wxCheckBox* option : Switches(dialog)) {
            EXPECT_TRUE(Until([option] {
                for (int x = 0; x < 10; ++x) {
                    wxPoint place(x, option->GetSize().y / 2);
                    if (native::ColourAt(option->ClientToScreen(place)).GetLuminance() > 0.6)
                        return true;
                }
                return false;
            })) << option->GetLabel();
        }
        Click(dialog->cmdCancel);
    });
    native::PreferDarkTheme(false);
}

TEST_F(SettingsWindowTest, LettersTypedOneAfterAnotherEachPickAKey) {
    Edit([this](frmSettings* dialog) {
        EXPECT_EQ(dialog->Status.cboKey->GetCount(), 37u);
        Type(dialog->Status.cboKey, "AB");
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
        Settings.HardcoreActive = !row.Chosen;
        Edit([this](frmSettings* dialog) {
            dialog->chkHardcoreMode->SetValue(!dialog->chkHardcoreMode->GetValue());
            dialog->chkDisplayFailures->SetValue(!dialog->chkDisplayFailures->GetValue());
            Key(WXK_RETURN);
        });
        EXPECT_EQ(Settings.HardcoreMode, row.Chosen);
        EXPECT_EQ(Settings.DisplayFailures, display = !display)
            << "the rest is stored all the same";
        EXPECT_EQ(Settings.HardcoreActive, !row.Chosen) << "until the next start";
        EXPECT_THAT(modals_.TakeMessages(), ElementsAre(row.Message));
    }
}

}  // namespace

}  // namespace quirkmeter
