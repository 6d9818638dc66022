#include "rehearse/page_file.h"

#include <wx/filename.h>

#include <fstream>

#include "platform/platform.h"
#include "rehearse/files.h"
#include "rehearse/print.h"
#include "ui/look.h"

namespace quirkmeter::rehearse {

namespace {

constexpr int MaxNames = 99;

// False for a file that has the report's name but is no report: it must stay.
bool MayHoldReport(const std::string& path) {
    if (!platform::CanReplaceFile(path)) return false;
    char start[1024];
    std::ifstream file(path, std::ios::binary);
    file.read(start, sizeof start);
    return !file.is_open() || IsPage({start, static_cast<std::size_t>(file.gcount())});
}

std::string PathIn(const wxString& folder, const wxFileName& profile, int n) {
    wxString name = profile.GetName() + " rehearsal";
    if (n > 1) name << " " << n;
    return look::Stored(wxFileName(folder, name, "htm").GetFullPath());
}

}  // namespace

PageFile WritePage(const std::string& profile, const std::string& page) {
    wxFileName name(look::Shown(profile));
    name.MakeAbsolute();
    PageFile file{"", PathIn(name.GetPath(), name, 1)};
    for (const wxString& folder : {name.GetPath(), wxFileName::GetTempDir()})
        for (int n = 1; n <= MaxNames; ++n) {
            std::string path = PathIn(folder, name, n);
            if (!MayHoldReport(path) || !WriteReport(path, page)) continue;
            file.Path = path;
            return file;
        }
    return file;
}

}  // namespace quirkmeter::rehearse
