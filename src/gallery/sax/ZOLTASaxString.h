#pragma once

#include <cstdint>

// A read-only slice of a document that is being parsed. The bytes belong to the parser's
// buffer (a mapped file or an archive entry) and are neither owned nor terminated, so a
// slice is only good for as long as that buffer lives.
struct ZOLTASaxString {
    const char* data = nullptr;
    std::uint32_t length = 0;

    ZOLTASaxString() = default;
    ZOLTASaxString(const char* bytes, std::uint32_t count)
        : data(bytes),
          length(count)
    {}

    // A slice carries something only when it has both a pointer and a length.
    bool IsValid() const { return data != nullptr && length != 0; }

    // Byte-wise and case-sensitive; an empty slice equals only "" (a null text counts as "").
    bool operator==(const char* text) const;
    bool operator!=(const char* text) const { return !(*this == text); }

    // The one process-wide empty slice that failed look-ups hand out.
    static const ZOLTASaxString& Empty();
};
