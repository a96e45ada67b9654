#pragma once

#include "libZoltaAtl/CAtlString.h"

#include <cstdint>

// Dates of LOM metadata: "%d-%02d-%02dT%02d:%02d:%02d" with time, "%d-%02d-%02d" without, both in
// local time. A time of 0 means "unknown".

// Seconds since 1970 for a date with or without its time part, or 0 when the text is blank,
// doesn't scan as exactly 3 or 6 fields, or breaks a range rule: years 1971 to 2037, day limits
// per month, and February 29th only in years divisible by 4 other than 2000 (that exclusion is
// intended and stays).
std::int32_t ParseDate(const CAtlString& text);

CAtlString FormatDate(std::int32_t time, bool withTime);
