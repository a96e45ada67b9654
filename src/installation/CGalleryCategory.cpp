#include "installation/CGalleryCategory.h"

#include "gallery/CGalleryInstalledManifest.h"
#include "gallery/GalleryLanguage.h"

#include <tinyxml2.h>

#include <cstdio>

namespace {

void ReadNumber(const tinyxml2::XMLElement& element, const char* name, int& value)
{
    const char* text = element.Attribute(name);
    int parsed = 0;
    if (text && std::sscanf(text, "%d", &parsed) == 1)
        value = parsed;
}

CAtlString FirstTextChild(const tinyxml2::XMLElement& element)
{
    const tinyxml2::XMLNode* first = element.FirstChild();
    if (first && first->ToText() && first->Value())
        return CAtlString::FromUtf8(first->Value());
    return CAtlString();
}

}  // namespace

CAtlString CGalleryCategory::GetTitle(const wchar_t* language) const
{
    if (m_titles.empty())
        return CAtlString();
    const CAtlString current = language ? CAtlString(language) : GetCurrentLanguage();
    int bestLevel = 0;
    const CAtlString* best = &m_titles.front().second;
    for (const auto& [titleLanguage, title] : m_titles) {
        const int level = MatchLanguage(current, titleLanguage);
        if (level > bestLevel) {
            bestLevel = level;
            best = &title;
        }
    }
    return *best;
}

HRESULT CGalleryCategory::Read(const tinyxml2::XMLElement& element, const CGalleryInstalledRecords& installed)
{
    HRESULT hr = ReadRequiredAttribute(element, "id", m_id);
    if (FAILED(hr))
        return hr;
    hr = ReadRequiredAttribute(element, "version", m_version);
    if (FAILED(hr))
        return hr;
    ReadNumber(element, "size", m_size);
    ReadNumber(element, "count", m_count);
    ReadNumber(element, "disksize", m_diskSize);
    hr = ReadTitles(element);
    if (FAILED(hr))
        return hr;
    hr = ReadFiles(element, installed);
    if (FAILED(hr))
        return hr;
    return ReadStrings(element);
}

HRESULT CGalleryCategory::ReadTitles(const tinyxml2::XMLElement& element)
{
    const tinyxml2::XMLElement* title = element.FirstChildElement("title");
    if (!title)
        return E_FAIL;
    for (const tinyxml2::XMLElement* entry = title->FirstChildElement(); entry; entry = entry->NextSiblingElement()) {
        CAtlString language;
        const HRESULT hr = ReadRequiredAttribute(*entry, "language", language);
        if (FAILED(hr))
            return hr;
        m_titles.emplace_back(language, FirstTextChild(*entry));
    }
    return S_OK;
}

HRESULT CGalleryCategory::ReadFiles(const tinyxml2::XMLElement& element, const CGalleryInstalledRecords& installed)
{
    const tinyxml2::XMLElement* files = element.FirstChildElement("files");
    if (!files)
        return E_FAIL;
    for (const tinyxml2::XMLElement* entry = files->FirstChildElement(); entry; entry = entry->NextSiblingElement()) {
        CGalleryCategoryFile file;
        const HRESULT hr = file.Read(*entry);
        if (FAILED(hr))
            return hr;
        const auto record = installed.find(file.GetId());
        if (record != installed.end() && record->second) {
            if (CompareVersionText(record->second->GetVersion(), m_installedVersion) >= 0)
                m_installedVersion = record->second->GetVersion();
            file.SetInstalled(*record->second);
        }
        m_installed = m_installed || file.IsInstalled();
        // A file that never arrived needs an update too, so a half-installed category is offered again.
        m_updateAvailable = m_updateAvailable || file.NeedsUpdate();
        m_files.push_back(std::move(file));
    }
    return S_OK;
}

HRESULT CGalleryCategory::ReadStrings(const tinyxml2::XMLElement& element)
{
    const tinyxml2::XMLElement* strings = element.FirstChildElement("strings");
    if (!strings)
        return S_OK;
    for (const tinyxml2::XMLElement* entry = strings->FirstChildElement(); entry; entry = entry->NextSiblingElement()) {
        CAtlString language;
        const HRESULT hr = ReadRequiredAttribute(*entry, "language", language);
        if (FAILED(hr))
            return hr;
        m_strings[language] = FirstTextChild(*entry);
    }
    return S_OK;
}

CAtlString FormatByteSize(unsigned int bytes)
{
    CAtlString text;
    if (bytes < 1024)
        text.Format(L"%d bytes", bytes);
    else if (bytes < 10240)
        text.Format(L"%0.1lf KB", static_cast<double>(static_cast<float>(bytes) / 1024.0f));
    else if (bytes < 1048576)
        text.Format(L"%d KB", bytes >> 10);
    else if (bytes < 10485760)
        text.Format(L"%0.1lf MB", static_cast<double>(static_cast<float>(bytes) / 1048576.0f));
    else if (bytes < 1073741824)
        text.Format(L"%d MB", bytes >> 20);
    else
        text.Format(L"%0.1f GB", static_cast<double>(static_cast<float>(bytes) / 1073741824.0f));
    return text;
}
