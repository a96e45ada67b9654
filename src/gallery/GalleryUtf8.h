#pragma once

#include "libZoltaAtl/CAtlString.h"

#include <string>

// The UTF-8 edge of gallery texts: files hold UTF-8, records hold 32-bit wide characters.

// The UTF-8 form of a wide text; null gives "".
std::string ToUtf8(const wchar_t* text);

// The same, but a blank text (null, empty, U+FFFE) gives the UTF-8 form of U+FFFE: files hold
// that character for an empty value, because an empty element would vanish on reading.
std::string ToUtf8OrBlank(const wchar_t* text);

// A wide string decoded exactly from UTF-8; null gives an empty string.
CAtlString FromUtf8(const char* text);
