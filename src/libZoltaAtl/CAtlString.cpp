#include "libZoltaAtl/CAtlString.h"

#include "libZoltaAtl/AtlStringCore.h"
#include "libZoltaAtl/CAtlStringA.h"
#include "libZoltaAtl/UniCharUtils.h"
#include "libZoltaAtl/ZoltaAssert.h"

#include <cstddef>
#include <cstring>
#include <cwchar>
#include <ostream>
#include <string>
#include <string_view>

namespace {

using Core = zolta_detail::StringCore<CAtlString>;

// 8-bit text in comparisons is taken as a CAtlString first.
int CompareWithBytes(const CAtlString& s1, const char* s2)
{
    return Core::CompareStrings(s1, CAtlString(s2));
}

int CompareWithBytes(const char* s1, const CAtlString& s2)
{
    return Core::CompareStrings(CAtlString(s1), s2);
}

}  // namespace

CAtlStringData* const CAtlString::_afxDataNil = &zolta_detail::g_emptyBlock<CAtlStringData, wchar_t>.header;

ZOLTA_STRING_SHARED_MEMBERS(CAtlString, wchar_t, CAtlStringData)

// With multi-byte sequences fewer characters are decoded than the length says; the rest stays zero.
void zolta_detail::StringTraits<CAtlString>::AssignOtherText(CAtlString& s, const char* ca, int nLength)
{
    s.AllocBeforeWrite(nLength);
    if (nLength > 0) {
        wchar_t* chars = s.GetBuffer();
        std::wmemset(chars, 0, static_cast<size_t>(nLength));
        CAtoWCA32(ca, chars, nLength);
    }
    Core::SetLengthAndTerminate(s, nLength);
}

// Every "%s" of the copy reads "%ls", so that "%s" takes a wide string as the 8-bit family of
// printf functions would take a narrow one. Purely textual: "%%s" becomes "%%ls" too.
std::wstring zolta_detail::StringTraits<CAtlString>::AdaptFormat(const wchar_t* format)
{
    std::wstring result;
    for (const wchar_t* p = format; *p != 0; ++p) {
        if (p[0] == L'%' && p[1] == L's') {
            result += L"%ls";
            ++p;
        } else {
            result += *p;
        }
    }
    return result;
}

// ---------------------------------------------------------------------------------------------
// 8-bit text: the length is the byte count, the bytes are decoded as UTF-8 (exact for ASCII only)

CAtlString::CAtlString(const char* lpsz)
{
    Core::Init(*this);
    Core::AssignOtherText(*this, lpsz);
}

CAtlString::CAtlString(const CAtlStringA& stringSrc)
{
    Core::Init(*this);
    Core::AssignOtherText(*this, stringSrc.GetString());
}

CAtlString& CAtlString::operator=(const CAtlStringA& stringSrc)
{
    return *this = static_cast<const char*>(stringSrc);
}
CAtlString& CAtlString::Append(const CAtlStringA& str)
{
    return Append(CAtlString(str));
}

int CAtlString::Find(const char* sub, int nStart) const
{
    ZOLTA_ASSERT_TEXT(sub != nullptr, "sub != __null");
    return Find(CAtlString(sub).GetString(), nStart);
}

int CAtlString::FindOneOf(const char* lpszCharSet) const
{
    ZOLTA_ASSERT_TEXT(lpszCharSet != nullptr, "lpszCharSet != __null");
    return FindOneOf(CAtlString(lpszCharSet).GetString());
}

ZOLTA_STRING_RELATIONS(const CAtlString&, const char*, CompareWithBytes)
ZOLTA_STRING_RELATIONS(const char*, const CAtlString&, CompareWithBytes)

// ---------------------------------------------------------------------------------------------
// QString and exact UTF-8

CAtlString::CAtlString(const QString& str)
{
    Core::Init(*this);
    const int nLength = static_cast<int>(str.length());
    if (nLength > 0) {
        AllocBuffer(nLength);
        // Characters outside the BMP take two QChars but one wide character.
        const int nWritten = static_cast<int>(str.toWCharArray(m_pchData));
        if (nWritten == 0)
            Release();
        else
            Core::SetLengthAndTerminate(*this, nWritten);
    }
}

CAtlString& CAtlString::operator=(const QString& str)
{
    return *this = CAtlString(str);
}

QString CAtlString::ToQString() const
{
    return QString::fromWCharArray(m_pchData, GetLength());
}

CAtlString CAtlString::FromUtf8(const char* utf8, int nLength)
{
    if (utf8 == nullptr)
        return CAtlString();
    return CAtlString(QString::fromUtf8(utf8, nLength < 0 ? static_cast<qsizetype>(std::strlen(utf8)) : nLength));
}

CAtlStringA CAtlString::ToUtf8() const
{
    return CAtlStringA(ToQString());
}

void PrintTo(const CAtlString& str, std::ostream* os)
{
    *os << '"' << str.ToQString().toStdString() << '"';
}

// ---------------------------------------------------------------------------------------------
// Operations particular to the wide class

void CAtlString::Truncate(int nNewLength)
{
    ZOLTA_ASSERT_TEXT(nNewLength <= GetLength(), "nNewLength <= GetLength()");
    GetBuffer(nNewLength);
    ReleaseBuffer(nNewLength);
}

// An empty sub is never found here (the 8-bit class finds it at the start position).
int CAtlString::Find(const wchar_t* sub, int nStart) const
{
    ZOLTA_ASSERT_TEXT(sub != nullptr, "sub != __null");
    if (*sub == 0)
        return -1;
    const std::wstring_view text(m_pchData, static_cast<size_t>(GetLength()));
    const size_t found = text.find(sub, static_cast<size_t>(nStart));
    return found == std::wstring_view::npos ? -1 : static_cast<int>(found);
}
