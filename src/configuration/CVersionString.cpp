#include "configuration/CVersionString.h"

#include <QString>

#include <cwchar>
#include <string>

namespace {

// Shortest text that is read as packed digits; anything shorter leaves the numbers alone.
const int MinimumPackedLength = 7;

std::wstring ToWide(const CAtlString& text)
{
    std::wstring wide;
    wide.reserve(static_cast<std::size_t>(text.GetLength()));
    for (int i = 0; i < text.GetLength(); ++i)
        wide.push_back(text.GetAt(i));
    return wide;
}

// Cuts `count` characters off the right end of `rest` and returns them.
CAtlString CutRight(CAtlString& rest, int count)
{
    CAtlString piece = rest.Right(count);
    rest = rest.Left(rest.GetLength() - piece.GetLength());
    return piece;
}

}  // namespace

CVersionString::CVersionString() = default;

CVersionString::CVersionString(const CAtlString& text)
{
    *this = text;
}

CVersionString::CVersionString(const CAtlStringA& text)
{
    *this = text;
}

CVersionString::~CVersionString() = default;

CVersionString& CVersionString::operator=(const CAtlString& text)
{
    Parse(text);
    m_text = text;
    m_formatted.Format(L"%i.%i.%i.%i", m_major, m_minor, m_revision, m_build);
    return *this;
}

CVersionString& CVersionString::operator=(const CAtlStringA& text)
{
    // Version texts come from documents in UTF-8; go through QString to keep any stray byte intact.
    return *this = CAtlString(QString::fromUtf8(text.GetString(), text.GetLength()));
}

void CVersionString::Parse(const CAtlString& text)
{
    if (text.Find(L'.') >= 0)
        ParseDotted(text);
    else if (text.GetLength() >= MinimumPackedLength)
        ParsePacked(text);
}

void CVersionString::ParseDotted(const CAtlString& text)
{
    m_valid = true;
    int* const fields[] = {&m_major, &m_minor, &m_revision, &m_build};
    int start = 0;
    for (int* field : fields) {
        CAtlString part;
        if (start <= text.GetLength()) {
            int dot = text.Find(L'.', start);
            int end = dot < 0 ? text.GetLength() : dot;
            part = text.Mid(start, end - start);
            start = dot < 0 ? text.GetLength() + 1 : dot + 1;
        }
        ParsePart(part, *field);
    }
}

void CVersionString::ParsePacked(const CAtlString& text)
{
    m_valid = true;
    CAtlString rest = text;
    const int length = text.GetLength();
    if (length == MinimumPackedLength) {
        // Older seven-digit data carries the revision in its last two digits.
        ParsePart(CutRight(rest, 2), m_revision);
        ParsePart(CutRight(rest, 2), m_build);
        ParsePart(CutRight(rest, 2), m_minor);
        ParsePart(rest.Right(2), m_major);
    } else if (length < 12) {
        ParsePart(CutRight(rest, 2), m_build);
        ParsePart(CutRight(rest, 3), m_revision);
        ParsePart(CutRight(rest, 2), m_minor);
        ParsePart(rest.Right(2), m_major);
    } else {
        ParsePart(CutRight(rest, 4), m_build);
        ParsePart(CutRight(rest, 4), m_revision);
        ParsePart(CutRight(rest, 3), m_minor);
        ParsePart(rest.Right(3), m_major);
    }
}

void CVersionString::ParsePart(const CAtlString& part, int& field)
{
    if (part.GetLength() == 0) {
        field = -1;
        m_valid = false;
        return;
    }
    std::wstring digits = ToWide(part);
    const size_t firstKept = digits.find_first_not_of(L'0');
    digits = firstKept == std::wstring::npos ? std::wstring(L"0") : digits.substr(firstKept);
    int value = 0;
    if (std::swscanf(digits.c_str(), L"%i", &value) == 1)
        field = value;
}

bool CVersionString::operator<(const CVersionString& other) const
{
    if (m_valid && other.m_valid) {
        if (m_major != other.m_major)
            return m_major < other.m_major;
        if (m_minor != other.m_minor)
            return m_minor < other.m_minor;
        if (m_revision != other.m_revision)
            return m_revision < other.m_revision;
        return m_build < other.m_build;
    }
    if (!m_valid && !other.m_valid)
        return m_text.Compare(other.m_text) < 0;
    return !m_valid;
}

bool CVersionString::operator==(const CVersionString& other) const
{
    if (m_valid && other.m_valid)
        return !(*this < other) && !(other < *this);
    if (!m_valid && !other.m_valid)
        return m_text.Compare(other.m_text) == 0;
    return false;
}

bool CVersionString::operator>(const CVersionString& other) const
{
    if (m_valid && other.m_valid)
        return other < *this;
    if (!m_valid && !other.m_valid)
        return m_text.Compare(other.m_text) > 0;
    return m_valid;
}

CAtlString CVersionString::ToString() const
{
    return m_valid ? m_formatted : m_text;
}
