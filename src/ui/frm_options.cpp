#include "ui/frm_options.h"

#include <wx/sizer.h>

#include "platform/platform.h"
#include "ui/frm_settings.h"
#include "ui/look.h"

namespace quirkmeter {

frmOptions::frmOptions(wxWindow* parent) : wxDialog(parent, wxID_ANY, "Help") {
    SetBackgroundColour(look::DarkGrey);
    SetFont(look::Text());

    cmdContents = new wxButton(this, wxID_ANY, "&Help");
    cmdSettings = new wxButton(this, wxID_ANY, "&Settings");
    cmdCancel = new wxButton(this, wxID_CANCEL, "&Cancel");
    lblVersion = new wxStaticText(this, wxID_ANY, wxEmptyString);
    lblVersion->SetForegroundColour(look::Yellow);
    cmdContents->SetDefault();
    SetEscapeId(wxID_CANCEL);

    auto* column = new wxBoxSizer(wxVERTICAL);
    auto gap = wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxTOP, FromDIP(12));
    for (wxButton* button : {cmdContents, cmdSettings, cmdCancel}) {
        button->SetMinSize(FromDIP(wxSize(180, -1)));
        column->Add(button, gap);
    }
    column->Add(lblVersion, wxSizerFlags().Center().Border(wxALL, FromDIP(12)));
    SetSizerAndFit(column);

    cmdContents->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { OnContents(); });
    cmdSettings->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { OnSettings(); });
}

void frmOptions::SetVersion(const wxString& caption) {
    lblVersion->SetLabelText(caption);
    Fit();
}

void frmOptions::OnContents() {
    std::string document = platform::ProgramFile("\\Quirkmeter.htm");
    auto owner = reinterpret_cast<platform::WindowHandle>(GetHandle());
    platform::ShellExecuteA(owner, "Open", document.c_str(), "0", "0", platform::ShowNormal);
}

void frmOptions::OnSettings() {
    frmSettings dialog;
    dialog.ShowModal();
    EndModal(wxID_CANCEL);
}

}  // namespace quirkmeter
