// A report as text, as a page and as a table of counts.
#pragma once

#include <string>
#include <string_view>

#include "rehearse/report.h"

namespace quirkmeter::rehearse {

std::string TextOf(const Report& report);

/// A page that is readable without its style sheet.
std::string PageOf(const Report& report);

/// True for a page that PageOf made; its first few hundred bytes are enough.
bool IsPage(std::string_view content);

/// "what,number,name,flights" and a line for each count.
std::string CsvOf(const Report& report);

/// The calculated chances beside those of the flights.
std::string ChancesOf(const Report& report);

}  // namespace quirkmeter::rehearse
