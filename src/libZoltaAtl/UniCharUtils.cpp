#include "libZoltaAtl/UniCharUtils.h"

#include "libZoltaAtl/ZoltaAssert.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

// Trailing bytes announced by a lead byte.
int TrailingBytesForUtf8(unsigned char lead)
{
    if (lead < 0xC0)
        return 0;
    if (lead < 0xE0)
        return 1;
    if (lead < 0xF0)
        return 2;
    if (lead < 0xF8)
        return 3;
    if (lead < 0xFC)
        return 4;
    return 5;
}

// What the accumulated lead and trail bytes carry on top of the code point, per sequence length.
const uint32_t kOffsetsFromUtf8[6] = {0x00000000UL, 0x00003080UL, 0x000E2080UL,
                                      0x03C82080UL, 0xFA082080UL, 0x82082080UL};

// Lead byte marks for sequences of 0 to 6 bytes.
const unsigned char kFirstByteMark[7] = {0x00, 0x00, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC};

// Tests one sequence of length bytes for well-formed UTF-8 (no overlongs, no surrogates,
// nothing above U+10FFFF, nothing longer than 4 bytes).
bool IsLegalUtf8(const unsigned char* source, int length)
{
    const unsigned char* p = source + length;
    unsigned char a = 0;
    switch (length) {
    default:
        return false;
    case 4:
        if ((a = *--p) < 0x80 || a > 0xBF)
            return false;
        [[fallthrough]];
    case 3:
        if ((a = *--p) < 0x80 || a > 0xBF)
            return false;
        [[fallthrough]];
    case 2:
        if ((a = *--p) > 0xBF)
            return false;
        switch (*source) {
        case 0xE0:
            if (a < 0xA0)
                return false;
            break;
        case 0xED:
            if (a > 0x9F)
                return false;
            break;
        case 0xF0:
            if (a < 0x90)
                return false;
            break;
        case 0xF4:
            if (a > 0x8F)
                return false;
            break;
        default:
            if (a < 0x80)
                return false;
        }
        [[fallthrough]];
    case 1:
        if (*source >= 0x80 && *source < 0xC2)
            return false;
    }
    return *source <= 0xF4;
}

// Bytes the encoder spends on one value. Values beyond 21 bits become U+FFFD written in two bytes,
// which keeps this count and the encoder in step.
int Utf8BytesFor(uint32_t ch)
{
    if (ch < 0x80)
        return 1;
    if (ch < 0x800)
        return 2;
    if (ch < 0x10000)
        return 3;
    if (ch < 0x200000)
        return 4;
    return 2;
}

bool IsSurrogate(uint32_t ch)
{
    return ch >= 0xD800 && ch <= 0xDFFF;
}

}  // namespace

void CAtoWCA32(const char* ca, wchar_t* wca, int count)
{
    ZOLTA_ASSERT_TEXT(ca != nullptr, "ca != __null");
    ZOLTA_ASSERT_TEXT(wca != nullptr, "wca != __null");
    if (count <= 0)
        return;

    const unsigned char* source = reinterpret_cast<const unsigned char*>(ca);
    const unsigned char* const sourceEnd = source + count;
    wchar_t* target = wca;
    wchar_t* const targetEnd = wca + count;

    while (source < sourceEnd) {
        const int extraBytes = TrailingBytesForUtf8(*source);
        if (extraBytes >= sourceEnd - source)
            break;  // the sequence would run past the end of the source
        if (!IsLegalUtf8(source, extraBytes + 1))
            break;
        uint32_t ch = 0;
        for (int i = 0; i < extraBytes; ++i) {
            ch += *source++;
            ch <<= 6;
        }
        ch += *source++;
        ch -= kOffsetsFromUtf8[extraBytes];
        if (target >= targetEnd)
            break;
        const int32_t value = static_cast<int32_t>(ch);
        *target++ = value < 0 ? static_cast<wchar_t>(0xFFFD) : static_cast<wchar_t>(value);
    }
}

void WCA32toCA(const wchar_t* wca, char* ca, int count)
{
    ZOLTA_ASSERT_TEXT(wca != nullptr, "wca != __null");
    ZOLTA_ASSERT_TEXT(ca != nullptr, "ca != __null");
    if (count <= 0)
        return;

    const wchar_t* source = wca;
    const wchar_t* const sourceEnd = wca + count;
    unsigned char* target = reinterpret_cast<unsigned char*>(ca);
    unsigned char* const targetEnd = target + count;

    while (source < sourceEnd) {
        uint32_t ch = static_cast<uint32_t>(*source++);
        if (IsSurrogate(ch))
            break;
        const int bytesToWrite = Utf8BytesFor(ch);
        if (ch >= 0x200000)
            ch = 0xFFFD;
        if (bytesToWrite > targetEnd - target)
            break;
        target += bytesToWrite;
        switch (bytesToWrite) {
        case 4:
            *--target = static_cast<unsigned char>((ch | 0x80) & 0xBF);
            ch >>= 6;
            [[fallthrough]];
        case 3:
            *--target = static_cast<unsigned char>((ch | 0x80) & 0xBF);
            ch >>= 6;
            [[fallthrough]];
        case 2:
            *--target = static_cast<unsigned char>((ch | 0x80) & 0xBF);
            ch >>= 6;
            [[fallthrough]];
        case 1:
            *--target = static_cast<unsigned char>(ch | kFirstByteMark[bytesToWrite]);
        }
        target += bytesToWrite;
    }
}

int WCA32Utf8Length(const wchar_t* wca)
{
    if (wca == nullptr)
        return 0;
    int length = 0;
    for (const wchar_t* p = wca; *p != 0; ++p) {
        const uint32_t ch = static_cast<uint32_t>(*p);
        if (IsSurrogate(ch))
            return -1;
        length += Utf8BytesFor(ch);
    }
    return length;
}

char* WCA32toNewCA(const wchar_t* wca)
{
    const int length = WCA32Utf8Length(wca);
    const int usable = length > 0 ? length : 0;
    char* result = static_cast<char*>(std::calloc(static_cast<size_t>(usable) + 1, 1));
    if (result != nullptr && usable > 0)
        WCA32toCA(wca, result, usable);
    return result;
}

wchar_t* CAtoNewWCA32(const char* ca)
{
    ZOLTA_ASSERT_TEXT(ca != nullptr, "ca != __null");
    const size_t length = std::strlen(ca);
    // Zeroed, so the decoded text is terminated even when it is shorter than the byte count.
    wchar_t* result = static_cast<wchar_t*>(std::calloc(length + 1, sizeof(wchar_t)));
    if (result != nullptr)
        CAtoWCA32(ca, result, static_cast<int>(length));
    return result;
}
