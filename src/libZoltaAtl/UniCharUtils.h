#pragma once

// Conversions between UTF-8 byte strings and 32-bit wide strings.

// Decodes at most count bytes of UTF-8 from ca into wca (room for count characters). Stops at an
// illegal or truncated sequence; what was written stays. No terminator is written.
void CAtoWCA32(const char* ca, wchar_t* wca, int count);

// Encodes up to count wide characters of wca as UTF-8 into at most count bytes of ca. Stops at a
// surrogate code point or when the next character does not fit. No terminator is written.
void WCA32toCA(const wchar_t* wca, char* ca, int count);

// UTF-8 bytes the terminated wide string needs, terminator not counted; 0 for null, -1 if a
// surrogate code point occurs.
int WCA32Utf8Length(const wchar_t* wca);

// New malloc block holding the terminated UTF-8 form; the caller frees it.
char* WCA32toNewCA(const wchar_t* wca);

// New malloc block of strlen+1 wide characters holding the decoded, terminated text; the caller
// frees it.
wchar_t* CAtoNewWCA32(const char* ca);
