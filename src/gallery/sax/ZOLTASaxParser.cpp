#include "gallery/sax/ZOLTASaxParser.h"

#include "gallery/sax/ZOLTASaxScanner.h"
#include "libZoltaAtl/CAtlString.h"
#include "libZoltaAtl/CAtlStringA.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr ZOLTASaxScanner::ByteClasses kWhileSpace = ZOLTASaxScanner::While(" \t\n\r");
constexpr ZOLTASaxScanner::ByteClasses kWhileSpaceOrClose = ZOLTASaxScanner::While(" \t\n\r>");
constexpr ZOLTASaxScanner::ByteClasses kUntilSpace = ZOLTASaxScanner::Until(" \t\n\r");
constexpr ZOLTASaxScanner::ByteClasses kUntilTagOpen = ZOLTASaxScanner::Until("<");
constexpr ZOLTASaxScanner::ByteClasses kUntilNameEnd = ZOLTASaxScanner::Until(" \t\n\r/>");
constexpr ZOLTASaxScanner::ByteClasses kUntilAttributeNameEnd = ZOLTASaxScanner::Until(" \t\n\r=/>");
constexpr ZOLTASaxScanner::ByteClasses kUntilQuote = ZOLTASaxScanner::Until("\"");
constexpr ZOLTASaxScanner::ByteClasses kUntilDoctypeMark = ZOLTASaxScanner::Until(">[]");

// One parse of one buffer. All state lives here and dies with the call.
class SaxRun {
public:
    SaxRun(const char* data, std::uint32_t length, ZOLTASaxContentHandler& handler)
        : m_data(data),
          m_length(length),
          m_scanner(reinterpret_cast<const unsigned char*>(data), length),
          m_handler(handler)
    {
        m_attributes.Reserve(ZOLTASaxParser::kAttributeCapacity);
    }

    [[nodiscard]] HRESULT Run()
    {
        HRESULT hr = m_handler.StartDocument();
        if (hr != S_OK)
            return hr;
        m_scanner.Skip(kWhileSpace);
        SkipXmlDeclaration();
        if (m_scanner.AtEnd())
            return E_FAIL;
        m_scanner.Skip(kWhileSpace);
        if (!SkipDoctype())
            return E_FAIL;
        return ParseContent();
    }

private:
    // A slice from `start` up to `end`, never reaching past the buffer: after a tracker the
    // scan position may stand a byte or two beyond the last byte.
    ZOLTASaxString Slice(std::size_t start, std::size_t end) const
    {
        end = std::min<std::size_t>(end, m_length);
        start = std::min(start, end);
        return ZOLTASaxString(m_data + start, static_cast<std::uint32_t>(end - start));
    }

    std::uint32_t ReportedPosition() const
    {
        return static_cast<std::uint32_t>(std::min<std::size_t>(m_scanner.Position(), m_length));
    }

    bool StartsWith(std::size_t position, const char* marker, std::size_t markerLength) const
    {
        return position + markerLength < m_length && std::memcmp(m_data + position, marker, markerLength) == 0;
    }

    // Position of the next "?>" at or after `from`, or m_length when there is none.
    std::size_t FindDeclarationEnd(std::size_t from) const
    {
        while (from < m_length) {
            const void* hit = std::memchr(m_data + from, '?', m_length - from);
            if (!hit)
                break;
            const auto question = static_cast<std::size_t>(static_cast<const char*>(hit) - m_data);
            if (question + 1 < m_length && m_data[question + 1] == '>')
                return question;
            from = question + 1;
        }
        return m_length;
    }

    // "<?xml ... ?>": its content, encoding included, means nothing here.
    void SkipXmlDeclaration()
    {
        const std::size_t position = m_scanner.Position();
        if (!StartsWith(position, "<?xml", 5))
            return;
        const std::size_t end = FindDeclarationEnd(position + 5);
        m_scanner.SetPosition(end < m_length ? end + 2 : m_length);
    }

    // "<!DOCTYPE ...>" at the head of the document, internal subset brackets balanced.
    bool SkipDoctype()
    {
        if (!StartsWith(m_scanner.Position(), "<!DOCTYPE", 9))
            return true;
        m_scanner.Advance(9);
        for (;;) {
            m_scanner.Skip(kUntilDoctypeMark);
            if (m_scanner.AtEnd())
                break;
            const unsigned char mark = m_scanner.Current();
            if (mark == '[')
                ++m_depth;
            else if (mark == ']')
                --m_depth;
            else if (m_depth == 0)
                break;
            m_scanner.Advance(1);
        }
        m_scanner.Advance(1);
        return !m_scanner.AtEnd() && m_depth == 0;
    }

    [[nodiscard]] HRESULT ParseContent()
    {
        for (;;) {
            m_scanner.Skip(kUntilTagOpen);
            const std::size_t next = m_scanner.Position() + 1;
            if (next >= m_length) {
                m_scanner.SetPosition(next);
                return m_depth != 0 ? E_FAIL : m_handler.EndDocument();
            }
            HRESULT hr;
            if (m_data[next] == '/')
                hr = ParseEndTag(next + 1);
            else if (m_data[next] == '?')
                hr = SkipProcessingInstruction(next + 1);
            else
                hr = ParseStartTag(next);
            if (hr != S_OK)
                return hr;
        }
    }

    [[nodiscard]] HRESULT SkipProcessingInstruction(std::size_t from)
    {
        const std::size_t question = FindDeclarationEnd(from);
        if (question >= m_length)
            return E_FAIL;
        m_scanner.SetPosition(question + 1);
        return S_OK;
    }

    bool ReadName(std::size_t start)
    {
        m_scanner.SetPosition(start);
        m_scanner.Skip(kUntilNameEnd);
        if (m_scanner.AtEnd())
            return false;
        m_qName = Slice(start, m_scanner.Position());
        return true;
    }

    [[nodiscard]] HRESULT ParseEndTag(std::size_t nameStart)
    {
        if (!ReadName(nameStart))
            return E_FAIL;
        const HRESULT hr =
            m_handler.EndElement(ZOLTASaxString::Empty(), m_localName, m_qName, ReportedPosition(), m_length);
        if (hr != S_OK)
            return hr;
        m_scanner.Skip(kWhileSpaceOrClose);
        --m_depth;
        return S_OK;
    }

    // Reads one attribute at the position; false when the buffer ends inside it.
    bool ReadAttribute()
    {
        const std::size_t nameStart = m_scanner.Position();
        m_scanner.Skip(kUntilAttributeNameEnd);
        const ZOLTASaxString name = Slice(nameStart, m_scanner.Position());
        m_scanner.Skip(kWhileSpace);
        if (m_scanner.AtEnd())
            return false;
        ZOLTASaxString value;
        if (m_scanner.Current() == '=') {
            m_scanner.Advance(1);
            m_scanner.Skip(kWhileSpace);
            if (m_scanner.AtEnd())
                return false;
            if (m_scanner.Current() == '"') {
                m_scanner.Advance(1);
                const std::size_t valueStart = m_scanner.Position();
                m_scanner.Skip(kUntilQuote);
                value = Slice(valueStart, m_scanner.Position());
                m_scanner.Advance(1);
            } else {
                // Unquoted: runs to white space, and may so swallow "/" and ">".
                const std::size_t valueStart = m_scanner.Position();
                m_scanner.Skip(kUntilSpace);
                value = Slice(valueStart, m_scanner.Position());
            }
        }
        m_attributes.names[m_attributes.count] = name;
        m_attributes.values[m_attributes.count] = value;
        ++m_attributes.count;
        return m_attributes.count < m_attributes.capacity;
    }

    [[nodiscard]] HRESULT ParseStartTag(std::size_t nameStart)
    {
        if (!ReadName(nameStart))
            return E_FAIL;
        m_attributes.count = 0;
        for (;;) {
            m_scanner.Skip(kWhileSpace);
            if (m_scanner.AtEnd())
                return E_FAIL;
            if (m_scanner.Current() == '/' || m_scanner.Current() == '>')
                break;
            if (!ReadAttribute())
                return E_FAIL;
        }
        const bool empty = m_scanner.Current() == '/';
        m_scanner.Advance(empty ? 2 : 1);
        m_localName = m_qName;
        return empty ? ReportEmptyElement() : ReportElementWithContent();
    }

    [[nodiscard]] HRESULT ReportEmptyElement()
    {
        ++m_depth;
        HRESULT hr = m_handler.StartElement(ZOLTASaxString::Empty(), m_localName, m_qName, m_attributes,
                                            ZOLTASaxString(), ReportedPosition(), m_length);
        if (hr != S_OK)
            return hr;
        hr = m_handler.EndElement(ZOLTASaxString::Empty(), m_localName, m_qName, ReportedPosition(), m_length);
        if (hr != S_OK)
            return hr;
        --m_depth;
        return S_OK;
    }

    // Only the run of text straight behind the start tag is reported, with its white space.
    [[nodiscard]] HRESULT ReportElementWithContent()
    {
        const std::size_t textStart = m_scanner.Position();
        m_scanner.Skip(kWhileSpace);
        if (m_scanner.AtEnd())
            return E_FAIL;
        ZOLTASaxString text;
        if (m_scanner.Current() != '<') {
            m_scanner.Skip(kUntilTagOpen);
            text = Slice(textStart, m_scanner.Position());
        }
        ++m_depth;
        return m_handler.StartElement(ZOLTASaxString::Empty(), m_localName, m_qName, m_attributes, text,
                                      ReportedPosition(), m_length);
    }

    const char* const m_data;
    const std::uint32_t m_length;
    ZOLTASaxScanner m_scanner;
    ZOLTASaxContentHandler& m_handler;
    ZOLTASaxAttributes m_attributes;
    ZOLTASaxString m_qName;
    ZOLTASaxString m_localName;
    long m_depth = 0;
};

// A read-only private mapping of a whole file, dropped with the object.
class MappedFile {
public:
    explicit MappedFile(const char* path)
    {
        const int fd = ::open(path, O_RDONLY | O_CLOEXEC);
        if (fd < 0)
            return;
        struct stat info {};
        if (::fstat(fd, &info) == 0 && info.st_size > 0 &&
            static_cast<unsigned long long>(info.st_size) <= std::numeric_limits<std::uint32_t>::max())
        {
            void* bytes = ::mmap(nullptr, static_cast<std::size_t>(info.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
            if (bytes != MAP_FAILED) {
                m_bytes = static_cast<const char*>(bytes);
                m_size = static_cast<std::size_t>(info.st_size);
            }
        }
        ::close(fd);
    }
    ~MappedFile()
    {
        if (m_bytes)
            ::munmap(const_cast<char*>(m_bytes), m_size);
    }
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    const char* Bytes() const { return m_bytes; }
    std::uint32_t Size() const { return static_cast<std::uint32_t>(m_size); }

private:
    const char* m_bytes = nullptr;
    std::size_t m_size = 0;
};

}  // namespace

HRESULT ZOLTASaxParser::ParseBuffer(const char* data, std::uint32_t length, ZOLTASaxContentHandler& handler)
{
    if (!data && length != 0)
        return E_POINTER;
    SaxRun run(data, length, handler);
    return run.Run();
}

HRESULT ZOLTASaxParser::ParseFile(const char* path, ZOLTASaxContentHandler& handler)
{
    if (!path)
        return E_FAIL;
    MappedFile file(path);
    if (!file.Bytes())
        return E_FAIL;
    return ParseBuffer(file.Bytes(), file.Size(), handler);
}

HRESULT ZOLTASaxParser::ParseFile(const CAtlString& path, ZOLTASaxContentHandler& handler)
{
    const CAtlStringA utf8Path(path.GetString());
    return ParseFile(utf8Path.GetString(), handler);
}
