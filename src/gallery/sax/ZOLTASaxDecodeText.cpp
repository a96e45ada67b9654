#include "gallery/sax/ZOLTASaxDecodeText.h"

#include "gallery/sax/ZOLTASaxScanner.h"
#include "libZoltaAtl/CAtlString.h"
#include "libZoltaAtl/UniCharUtils.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

struct NamedEntity {
    const char* text;
    std::size_t length;
    char replacement;
};

// Tried in this order, by prefix.
constexpr NamedEntity kNamedEntities[] = {
    {"&amp;", 5, '&'}, {"&quot;", 6, '"'}, {"&apos;", 6, '\''}, {"&lt;", 4, '<'}, {"&gt;", 4, '>'},
};

bool HasPrefix(const unsigned char* bytes, std::size_t length, std::size_t position, const char* prefix,
               std::size_t prefixLength)
{
    return position + prefixLength <= length && std::memcmp(bytes + position, prefix, prefixLength) == 0;
}

std::size_t NextSemicolon(const unsigned char* bytes, std::size_t length, std::size_t position)
{
    const void* hit = std::memchr(bytes + position, ';', length - position);
    return hit ? static_cast<std::size_t>(static_cast<const unsigned char*>(hit) - bytes) : length;
}

// "&#x" followed by what "%x" accepts; the value keeps only its low byte.
bool ReadHexReference(const unsigned char* bytes, std::size_t length, std::size_t position, char& decoded)
{
    if (!HasPrefix(bytes, length, position, "&#x", 3))
        return false;
    // The digits end at the ";" at the latest, so a terminated copy up to it reads the same.
    const std::size_t end = NextSemicolon(bytes, length, position);
    const std::string digits(reinterpret_cast<const char*>(bytes) + position + 3, end - position - 3);
    unsigned int value = 0;
    if (std::sscanf(digits.c_str(), "%x", &value) != 1)
        return false;
    decoded = static_cast<char>(value & 0xFFu);
    return true;
}

// Decodes the reference at `position` (an "&") and moves behind the next ";".
bool ReadReference(const unsigned char* bytes, std::size_t length, std::size_t& position, char& decoded)
{
    bool matched = false;
    for (const NamedEntity& entity : kNamedEntities) {
        if (HasPrefix(bytes, length, position, entity.text, entity.length)) {
            decoded = entity.replacement;
            matched = true;
            break;
        }
    }
    if (!matched && !ReadHexReference(bytes, length, position, decoded))
        return false;
    const std::size_t semicolon = NextSemicolon(bytes, length, position);
    position = semicolon < length ? semicolon + 1 : length;
    return true;
}

}  // namespace

bool DecodeTextBytes(const ZOLTASaxString& slice, std::string& utf8)
{
    utf8.clear();
    if (!slice.IsValid())
        return true;
    const auto* bytes = reinterpret_cast<const unsigned char*>(slice.data);
    const std::size_t length = slice.length;
    utf8.reserve(length);
    bool inComment = false;
    bool inCdata = false;
    std::size_t position = 0;
    while (position < length) {
        // Comments inside a slice disappear whole: no extra step here, unlike the scanner.
        if (ZOLTASaxScanner::TrackComment(inComment, position, bytes, length))
            continue;
        // While the CDATA flag is set every round moves one byte and copies one, entities
        // untouched. The byte is copied without moving on, so the round after the flag
        // clears sees it again.
        if (ZOLTASaxScanner::TrackCdata(inCdata, position, bytes, length)) {
            if (position < length)
                utf8.push_back(static_cast<char>(bytes[position]));
            continue;
        }
        if (bytes[position] == '&') {
            char decoded = 0;
            if (!ReadReference(bytes, length, position, decoded)) {
                utf8.clear();
                return false;
            }
            utf8.push_back(decoded);
            continue;
        }
        utf8.push_back(static_cast<char>(bytes[position]));
        ++position;
    }
    const std::size_t terminator = utf8.find('\0');
    if (terminator != std::string::npos)
        utf8.resize(terminator);
    return true;
}

CAtlString DecodeText(const ZOLTASaxString& slice)
{
    std::string utf8;
    if (!DecodeTextBytes(slice, utf8) || utf8.empty())
        return CAtlString();
    // Decoded exactly: the length is what the decoder wrote, not the byte count.
    wchar_t* wide = CAtoNewWCA32(utf8.c_str());
    if (!wide)
        return CAtlString();
    CAtlString text(wide);
    std::free(wide);
    return text;
}
