// The smallest wxWidgets program.
#include <wx/app.h>
#include <wx/frame.h>

class EmptyFrame final : public wxApp {
   public:
    bool OnInit() override { return (new wxFrame(nullptr, wxID_ANY, "Empty frame"))->Show(); }
};

wxIMPLEMENT_APP(EmptyFrame);
