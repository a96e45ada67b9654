#pragma once

#include "gallery/sax/ZOLTASaxString.h"

#include <string>

class CAtlString;

// Turns a raw text or attribute slice into its bytes: comments vanish, the bytes after a
// "]]>" marker are copied verbatim, the five named entities and hexadecimal references
// ("&#x41;", one byte) are replaced. Decimal references are not understood. Returns false,
// leaving `utf8` empty, when an "&" starts neither: one bad "&" empties the whole text.
// The result stops at its first zero byte, as the text it becomes would.
bool DecodeTextBytes(const ZOLTASaxString& slice, std::string& utf8);

// DecodeTextBytes, read as UTF-8 into a wide string. Handlers call it on what they keep;
// the parser never decodes.
CAtlString DecodeText(const ZOLTASaxString& slice);
