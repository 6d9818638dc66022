// The options dialog: the version, the way to the help document and to the settings.
#pragma once

#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/stattext.h>

namespace quirkmeter {

class frmOptions final : public wxDialog {
   public:
    explicit frmOptions(wxWindow* parent);

    /// The caption of lblVersion, set before the dialog is shown.
    void SetVersion(const wxString& caption);

    wxButton* cmdContents;
    wxButton* cmdSettings;
    wxButton* cmdCancel;
    wxStaticText* lblVersion;

   private:
    void OnContents();
    void OnSettings();
};

}  // namespace quirkmeter
