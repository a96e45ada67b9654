#include "gallery/CGalleryI18N.h"

#include "gallery/CGalleryFolder.h"
#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryMetadata.h"
#include "foundation/CZoltaFilePath.h"
#include "gallery/sax/ZOLTASaxDecodeText.h"
#include "gallery/sax/ZOLTASaxParser.h"
#include "ziparchive/ZipHelpers.h"

#include <cstdlib>
#include <cwctype>
#include <string>
#include <unordered_map>

namespace {

// Items of one catalogue entry by identifier folded to lower case; the first item of an
// identifier wins, as a walk of the list in order would find it.
using ItemTable = std::unordered_map<std::wstring, const CGalleryI18N::ItemMetadata*>;

std::wstring FoldCase(const wchar_t* text)
{
    std::wstring folded(text ? text : L"");
    for (wchar_t& character : folded) {
        character = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(character)));
    }
    return folded;
}

ItemTable MakeItemTable(const CGalleryI18N::ManifestMetadata& entry)
{
    ItemTable table;
    table.reserve(entry.m_items.size());
    for (const auto& item : entry.m_items) {
        table.emplace(FoldCase(item->m_id.GetString()), item.get());
    }
    return table;
}

[[nodiscard]] HRESULT ApplyToMetadata(CGalleryMetadata& metadata, const ItemTable& items, const CAtlString& language)
{
    const auto found = items.find(FoldCase(metadata.m_identifier));
    if (found == items.end()) {
        return S_OK;
    }
    HRESULT result = metadata.m_titles->ReplaceLanguage(language.GetString(), found->second->m_titles);
    if (SUCCEEDED(result) && !found->second->m_keywords.empty()) {
        result = metadata.m_keywords->ReplaceLanguage(language.GetString(), found->second->m_keywords);
    }
    return result;
}

// The category first, then its activities, then its children, depth first.
[[nodiscard]] HRESULT ApplyToFolder(CGalleryFolder& folder, const ItemTable& items, const CAtlString& language)
{
    HRESULT result = ApplyToMetadata(*folder.m_metadata, items, language);
    for (std::uint32_t i = 0; SUCCEEDED(result) && i < folder.m_activities->GetCount(); ++i) {
        result = ApplyToMetadata(*folder.m_activities->GetAt(i)->m_metadata, items, language);
    }
    for (std::uint32_t i = 0; SUCCEEDED(result) && i < folder.m_children->GetCount(); ++i) {
        result = ApplyToFolder(*folder.m_children->GetAt(i), items, language);
    }
    return result;
}

[[nodiscard]] HRESULT LoadFromArchive(const CAtlString& path, CGalleryI18N& handler)
{
    unsigned char* buffer = nullptr;
    std::size_t size = 0;
    if (!ZipExtractToMemory(CZoltaFilePath(path), CAtlString(L"i18n.xml"), buffer, size)) {
        return E_FAIL;
    }
    const HRESULT result =
        ZOLTASaxParser::ParseBuffer(reinterpret_cast<const char*>(buffer), static_cast<std::uint32_t>(size), handler);
    std::free(buffer);
    return result;
}

}  // namespace

CGalleryI18N::~CGalleryI18N() = default;

HRESULT CGalleryI18N::Load(const CAtlString& path)
{
    const CAtlString extension = CZoltaFilePath(path).GetExtension();
    if (extension.CompareNoCase(L".xml") == 0) {
        return ZOLTASaxParser::ParseFile(ToFileSystemEncoding(path).constData(), *this);
    }
    if (extension.CompareNoCase(L".zip") == 0) {
        return LoadFromArchive(path, *this);
    }
    return E_FAIL;
}

HRESULT CGalleryI18N::StartElement(const ZOLTASaxString&, const ZOLTASaxString&, const ZOLTASaxString& qName,
                                   const ZOLTASaxAttributes& attributes, const ZOLTASaxString& text, std::uint32_t,
                                   std::uint32_t)
{
    if (qName == "keyword") {
        if (m_currentItem) {
            m_currentItem->m_keywords.push_back(DecodeText(text));
        }
    } else if (qName == "title") {
        if (m_currentItem) {
            m_currentItem->m_titles.push_back(DecodeText(text));
        }
    } else if (qName == "item") {
        m_currentItem.reset();
        if (m_currentManifest) {
            m_currentItem = std::make_shared<ItemMetadata>();
            m_currentItem->m_id = DecodeText(attributes.GetValue("id"));
            m_currentManifest->m_items.push_back(m_currentItem);
        }
    } else if (qName == "manifest") {
        m_currentItem.reset();
        m_currentManifest = std::make_shared<ManifestMetadata>();
        m_currentManifest->m_id = DecodeText(attributes.GetValue("id"));
        m_currentManifest->m_languageStringVersion = DecodeText(attributes.GetValue("languagestringversion"));
        m_manifests.push_back(m_currentManifest);
    } else if (qName == "i18n") {
        m_language = DecodeText(attributes.GetValue("language"));
    }
    return S_OK;
}

HRESULT CGalleryI18N::Apply(CGalleryManifest& manifest) const
{
    const std::wstring manifestId = FoldCase(manifest.GetIdentifier());
    const ManifestMetadata* entry = nullptr;
    for (const auto& candidate : m_manifests) {
        if (FoldCase(candidate->m_id.GetString()) == manifestId) {
            entry = candidate.get();
            break;
        }
    }
    if (!entry) {
        return S_OK;
    }
    HRESULT result =
        manifest.m_stringVersions->ReplaceLanguage(m_language.GetString(), {entry->m_languageStringVersion});
    if (FAILED(result)) {
        return result;
    }
    const ItemTable items = MakeItemTable(*entry);
    CGalleryOrganizationList& organizations = *manifest.GetOrganizations();
    for (std::uint32_t o = 0; SUCCEEDED(result) && o < organizations.GetCount(); ++o) {
        CGalleryFolderList& roots = *organizations.GetAt(o)->m_items;
        for (std::uint32_t i = 0; SUCCEEDED(result) && i < roots.GetCount(); ++i) {
            result = ApplyToFolder(*roots.GetAt(i), items, m_language);
        }
    }
    return result;
}
