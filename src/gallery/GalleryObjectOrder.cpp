#include "gallery/GalleryObjectOrder.h"

#include "libZoltaAtl/CAtlString.h"
#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryMetadata.h"
#include "gallery/GalleryIdentifiers.h"
#include "gallery/GalleryText.h"

#include <QCoreApplication>

#include <cwchar>
#include <cwctype>
#include <functional>
#include <string>

namespace {

std::wstring Lowered(const wchar_t* text)
{
    std::wstring lowered(text);
    for (wchar_t& c : lowered)
        c = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
    return lowered;
}

bool IsMyContentIdentifier(const wchar_t* identifier)
{
    return MyContentManifestIdentifier() == identifier || MyContentOrganizationIdentifier() == identifier ||
           MyContentCategoryIdentifier() == identifier;
}

// Last component of the folder that holds the file at `path`.
CAtlString FolderNameOf(const wchar_t* path)
{
    std::wstring folder(path ? path : L"");
    const std::size_t slash = folder.rfind(L'/');
    if (slash == std::wstring::npos)
        return CAtlString();
    folder.resize(slash);
    while (!folder.empty() && folder.back() == L'/')
        folder.pop_back();
    const std::size_t parentSlash = folder.rfind(L'/');
    return CAtlString(folder.c_str() + (parentSlash == std::wstring::npos ? 0 : parentSlash + 1));
}

CAtlString TitleOf(const CGalleryObject* object)
{
    const CGalleryMetadata* metadata = object->m_metadata;
    return metadata && metadata->m_titles ? CAtlString(metadata->m_titles->Lookup(nullptr)) : CAtlString();
}

int Sign(int value)
{
    return (value > 0) - (value < 0);
}

}  // namespace

int CompareTitles(const wchar_t* a, const wchar_t* b)
{
    const bool blankA = IsBlankText(a);
    const bool blankB = IsBlankText(b);
    if (blankA || blankB)
        return blankA == blankB ? 0 : (blankA ? -1 : 1);
    const int collated = std::wcscoll(Lowered(a).c_str(), Lowered(b).c_str());
    if (collated != 0)
        return Sign(collated);
    return Sign(std::wcscmp(a, b));
}

CAtlString GetObjectTitle(const CGalleryObject* object)
{
    if (!object)
        return CAtlString();
    if (IsMyContentIdentifier(object->GetIdentifier()))
        return CAtlString(QCoreApplication::translate("CGallery", "My Content"));
    switch (object->m_type) {
    case eGalleryObjectManifest:
        return FolderNameOf(static_cast<const CGalleryManifest*>(object)->GetPath());
    case eGalleryObjectActivity:
    case eGalleryObjectFolder:
    case eGalleryObjectOrganization:
    case eGalleryObjectOldFormatCategory:
        return TitleOf(object);
    default:
        return CAtlString();
    }
}

int CompareObjects(const CGalleryObject* a, const CGalleryObject* b)
{
    if (!a || !b)
        return a == b ? 0 : (a ? -1 : 1);
    const auto keyOf = [](const CGalleryObject* object) {
        const wchar_t* sortKey = object->m_metadata ? object->m_metadata->m_sortKey : nullptr;
        return IsBlankText(sortKey) ? GetObjectTitle(object) : CAtlString(sortKey);
    };
    const int byKey = CompareTitles(keyOf(a).GetString(), keyOf(b).GetString());
    if (byKey != 0)
        return byKey;
    const std::uint32_t timeA = a->m_metadata ? a->m_metadata->m_creationTime : 0;
    const std::uint32_t timeB = b->m_metadata ? b->m_metadata->m_creationTime : 0;
    if (timeA != timeB)
        return timeA < timeB ? -1 : 1;
    const int byIdentifier = std::wcscmp(a->GetIdentifier(), b->GetIdentifier());
    if (byIdentifier != 0)
        return Sign(byIdentifier);
    if (a == b)
        return 0;
    return std::less<const CGalleryObject*>()(a, b) ? -1 : 1;
}
