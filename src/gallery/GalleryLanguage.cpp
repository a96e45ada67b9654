#include "gallery/GalleryLanguage.h"

#include "libZoltaAtl/CAtlString.h"
#include "gallery/GalleryText.h"

#include <cwctype>
#include <string>

namespace {

struct Subtag {
    const wchar_t* begin;
    std::size_t length;
};

bool IsSeparator(wchar_t c)
{
    return c == L'-' || c == L'_';
}

// The subtag starting at `text`; `next` gets the start of the following one, or null.
Subtag ReadSubtag(const wchar_t* text, const wchar_t*& next)
{
    const wchar_t* end = text;
    while (*end && !IsSeparator(*end))
        ++end;
    next = *end ? end + 1 : nullptr;
    return {text, static_cast<std::size_t>(end - text)};
}

bool SubtagsAgree(const Subtag& a, const Subtag& b)
{
    const std::size_t length = a.length < b.length ? a.length : b.length;
    for (std::size_t i = 0; i < length; ++i) {
        if (std::towlower(static_cast<wint_t>(a.begin[i])) != std::towlower(static_cast<wint_t>(b.begin[i])))
            return false;
    }
    return true;
}

bool AnyFurtherSubtagAgrees(const wchar_t* restA, const wchar_t* restB)
{
    for (const wchar_t* a = restA; a;) {
        const Subtag subtagA = ReadSubtag(a, a);
        for (const wchar_t* b = restB; b;) {
            if (SubtagsAgree(subtagA, ReadSubtag(b, b)))
                return true;
        }
    }
    return false;
}

std::wstring& CurrentLanguage()
{
    static std::wstring language;
    return language;
}

}  // namespace

int MatchLanguage(const wchar_t* a, const wchar_t* b)
{
    if (IsBlankText(a) || IsBlankText(b))
        return 0;
    const wchar_t* restA = nullptr;
    const wchar_t* restB = nullptr;
    if (!SubtagsAgree(ReadSubtag(a, restA), ReadSubtag(b, restB)))
        return 0;
    if (!restA && !restB)
        return 3;
    if (!restA || !restB)
        return 2;
    return AnyFurtherSubtagAgrees(restA, restB) ? 3 : 1;
}

CAtlString GetCurrentLanguage()
{
    // A fresh block each time: the counts of CAtlString are not safe across threads.
    return CAtlString(CurrentLanguage().c_str());
}

void SetCurrentLanguage(const wchar_t* language)
{
    CurrentLanguage() = language ? language : L"";
}

const wchar_t* GetCurrentLanguageText()
{
    return CurrentLanguage().c_str();
}
