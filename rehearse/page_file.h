// The file of a profile's report when the pilot named none.
#pragma once

#include <string>

namespace quirkmeter::rehearse {

struct PageFile {
    std::string Path;   // of the file written; empty: it could not be written anywhere
    std::string Usual;  // "NAME rehearsal.htm" beside the profile, where the pilot looks for it
};

/// Writes the page beside the profile. If it cannot be written there, or another file has its name,
/// uses another name or the folder for temporary files.
PageFile WritePage(const std::string& profile, const std::string& page);

}  // namespace quirkmeter::rehearse
