#pragma once

// The byte scanner under the SAX parser and the text decoder. Its comment and CDATA tracking
// is peculiar on purpose: documents written by this system are read back by exactly this
// scanner, so its stepping must stay as it is (see the notes on each operation).

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

class ZOLTASaxScanner {
public:
    // Per byte value: whether the byte ends a scan, and whether it may open a comment ("<")
    // or a "]]>" marker ("]") and so needs the trackers first.
    enum : std::uint8_t { kGoOn = 0, kStop = 1, kTracker = 2 };
    using ByteClasses = std::array<std::uint8_t, 256>;

    // Classes for a scan that stops at the first byte of `members`.
    static constexpr ByteClasses Until(const char* members) { return Make(members, true); }
    // Classes for a scan that stops at the first byte not in `members`.
    static constexpr ByteClasses While(const char* members) { return Make(members, false); }

    ZOLTASaxScanner(const unsigned char* bytes, std::size_t length)
        : m_bytes(bytes),
          m_length(length)
    {}

    // Comment tracker. Clear flag: "<!--" with at least one byte behind it is consumed and
    // sets the flag. Set flag: "-->" with at least one byte behind it is consumed and clears
    // it, anything else moves one byte. Returns whether it consumed.
    static bool TrackComment(bool& inComment, std::size_t& position, const unsigned char* bytes, std::size_t length)
    {
        if (!inComment) {
            if (position + 4 < length && bytes[position] == '<' && bytes[position + 1] == '!' &&
                bytes[position + 2] == '-' && bytes[position + 3] == '-')
            {
                position += 4;
                inComment = true;
                return true;
            }
            return false;
        }
        if (position + 3 < length && bytes[position] == '-' && bytes[position + 1] == '-' && bytes[position + 2] == '>')
        {
            position += 3;
            inComment = false;
        } else {
            position += 1;
        }
        return true;
    }

    // CDATA tracker, with its markers the other way round: a clear flag looks for "]]>", a
    // set flag for "<![CDATA[". A section's opening marker therefore opens nothing.
    static bool TrackCdata(bool& inCdata, std::size_t& position, const unsigned char* bytes, std::size_t length)
    {
        if (!inCdata) {
            if (position + 3 < length && bytes[position] == ']' && bytes[position + 1] == ']' &&
                bytes[position + 2] == '>') {
                position += 3;
                inCdata = true;
                return true;
            }
            return false;
        }
        if (position + 9 < length && std::memcmp(bytes + position, "<![CDATA[", 9) == 0) {
            position += 9;
            inCdata = false;
        } else {
            position += 1;
        }
        return true;
    }

    // Moves on while (or until, by the classes) the byte at the position belongs to the set.
    // After a tracker consumed, the scan still takes its own step of one byte: inside a
    // comment it moves two bytes at a time and the byte behind "-->" is passed over unread.
    void Skip(const ByteClasses& classes)
    {
        bool inComment = false;
        bool inCdata = false;
        const unsigned char* const bytes = m_bytes;
        const std::size_t length = m_length;
        std::size_t position = m_position;
        while (position < length) {
            if (!inComment && !inCdata) {
                const std::uint8_t cls = classes[bytes[position]];
                if (cls == kGoOn) {
                    ++position;
                    continue;
                }
                if ((cls & kTracker) &&
                    (TrackComment(inComment, position, bytes, length) || TrackCdata(inCdata, position, bytes, length)))
                {
                    ++position;
                    continue;
                }
                if (cls & kStop)
                    break;
                ++position;
                continue;
            }
            // With a flag set one of the trackers always consumes.
            if (!TrackComment(inComment, position, bytes, length))
                TrackCdata(inCdata, position, bytes, length);
            ++position;
        }
        m_position = position;
    }

    std::size_t Position() const { return m_position; }
    void SetPosition(std::size_t position) { m_position = position; }
    void Advance(std::size_t count) { m_position += count; }
    bool AtEnd() const { return m_position >= m_length; }
    std::size_t Length() const { return m_length; }
    const unsigned char* Bytes() const { return m_bytes; }
    // The byte at the position; only to be called when not AtEnd().
    unsigned char Current() const { return m_bytes[m_position]; }

private:
    static constexpr ByteClasses Make(const char* members, bool stopOnMember)
    {
        ByteClasses classes{};
        for (unsigned value = 0; value < 256; ++value) {
            bool member = false;
            for (const char* m = members; *m; ++m)
                member = member || static_cast<unsigned char>(*m) == value;
            std::uint8_t cls = (member == stopOnMember) ? kStop : kGoOn;
            if (value == '<' || value == ']')
                cls |= kTracker;
            classes[value] = cls;
        }
        return classes;
    }

    const unsigned char* m_bytes;
    std::size_t m_length;
    std::size_t m_position = 0;
};
