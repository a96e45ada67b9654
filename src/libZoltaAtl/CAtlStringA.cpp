#include "libZoltaAtl/CAtlStringA.h"

#include "libZoltaAtl/AtlStringCore.h"
#include "libZoltaAtl/CAtlString.h"
#include "libZoltaAtl/UniCharUtils.h"
#include "libZoltaAtl/ZoltaAssert.h"

#include <cstddef>
#include <cstring>
#include <ostream>
#include <string_view>

namespace {

using Core = zolta_detail::StringCore<CAtlStringA>;

}  // namespace

CAtlStringAData* const CAtlStringA::_afxDataANil = &zolta_detail::g_emptyBlock<CAtlStringAData, char>.header;

ZOLTA_STRING_SHARED_MEMBERS(CAtlStringA, char, CAtlStringAData)

void zolta_detail::StringTraits<CAtlStringA>::AssignOtherText(CAtlStringA& s, const wchar_t* uca, int nLength)
{
    s.AllocBeforeWrite(nLength);
    char* chars = s.GetBuffer();
    for (int i = 0; i < nLength; ++i)
        chars[i] = FromOtherChar(uca[i]);
    Core::SetLengthAndTerminate(s, nLength);
}

// ---------------------------------------------------------------------------------------------
// Wide text: UTF-8 from a bare pointer, plain narrowing (low 8 bits) on every other road

CAtlStringA::CAtlStringA(const wchar_t* lpsz)
{
    Core::Init(*this);
    if (lpsz == nullptr)
        return;
    // UTF-8; a surrogate (length -1) gives an empty string.
    const int nLength = WCA32Utf8Length(lpsz);
    if (nLength > 0) {
        AllocBuffer(nLength);
        WCA32toCA(lpsz, m_pchData, nLength);
    }
}

CAtlStringA::CAtlStringA(const CAtlString& stringSrc)
{
    Core::Init(*this);
    Core::Traits::AssignOtherText(*this, stringSrc.GetString(), stringSrc.GetLength());
}

CAtlStringA& CAtlStringA::operator=(const CAtlString& stringSrc)
{
    Core::Traits::AssignOtherText(*this, stringSrc.GetString(), stringSrc.GetLength());
    return *this;
}

// ---------------------------------------------------------------------------------------------
// QString: the UTF-8 bytes of the text

CAtlStringA::CAtlStringA(const QString& str)
{
    Core::Init(*this);
    const QByteArray utf8 = str.toUtf8();
    Core::AssignCopy(*this, static_cast<int>(utf8.size()), utf8.constData());
}

CAtlStringA& CAtlStringA::operator=(const QString& str)
{
    return *this = CAtlStringA(str);
}

void PrintTo(const CAtlStringA& str, std::ostream* os)
{
    *os << '"' << std::string_view(str.GetString(), static_cast<size_t>(str.GetLength())) << '"';
}

// ---------------------------------------------------------------------------------------------
// Operations particular to the 8-bit class

CAtlStringA CAtlStringA::SpanIncluding(const char* lpszCharSet) const
{
    ZOLTA_ASSERT_TEXT(lpszCharSet != nullptr, "lpszCharSet != __null");
    return Left(static_cast<int>(std::strspn(m_pchData, lpszCharSet)));
}

CAtlStringA CAtlStringA::SpanExcluding(const char* lpszCharSet) const
{
    ZOLTA_ASSERT_TEXT(lpszCharSet != nullptr, "lpszCharSet != __null");
    return Left(static_cast<int>(std::strcspn(m_pchData, lpszCharSet)));
}

// strstr: an empty sub matches at the start position (the wide class never finds it).
int CAtlStringA::Find(const char* sub, int nStart) const
{
    ZOLTA_ASSERT_TEXT(sub != nullptr, "sub != __null");
    if (nStart < 0)
        nStart = 0;
    if (nStart >= GetData()->nDataLength)
        return -1;
    const char* lpsz = std::strstr(m_pchData + nStart, sub);
    return lpsz == nullptr ? -1 : static_cast<int>(lpsz - m_pchData);
}
