// Where the report of a profile goes when the pilot named no file.
#pragma once

#include <string>

namespace quirkmeter::rehearse {

struct PageFile {
    std::string Path;   // of the file written; empty: it could not be written anywhere
    std::string Usual;  // "NAME rehearsal.htm" beside the profile, where the pilot looks for it
};

/// Writes the page to its usual place or, where that cannot be done or holds somebody else's file,
/// to one as near to it as possible: under another name, or in the folder for temporary files.
PageFile WritePage(const std::string& profile, const std::string& page);

}  // namespace quirkmeter::rehearse
