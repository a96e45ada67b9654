#include "installation/CGalleryCategoryFile.h"

#include "gallery/CGalleryInstalledManifest.h"

#include <tinyxml2.h>

#include <cwchar>
#include <vector>

int CompareVersionText(const wchar_t* a, const wchar_t* b)
{
    return std::wcscmp(a ? a : L"", b ? b : L"");
}

HRESULT ReadRequiredAttribute(const tinyxml2::XMLElement& element, const char* name, CAtlString& value)
{
    const char* text = element.Attribute(name);
    if (!text)
        return E_INVALIDARG;
    if (!*text)
        return E_FAIL;
    value = CAtlString::FromUtf8(text);
    return S_OK;
}

HRESULT CGalleryCategoryFile::Read(const tinyxml2::XMLElement& element)
{
    const char* text = element.GetText();
    m_name = CAtlString::FromUtf8(text ? text : "");
    HRESULT hr = ReadRequiredAttribute(element, "id", m_id);
    if (FAILED(hr))
        return hr;
    hr = ReadRequiredAttribute(element, "version", m_version);
    if (FAILED(hr))
        return hr;
    m_needsUpdate = true;
    if (const char* strings = element.Attribute("strings"))
        m_strings = ParseStrings(CAtlString::FromUtf8(strings));
    return S_OK;
}

void CGalleryCategoryFile::SetInstalled(const CGalleryInstalledManifest& record)
{
    m_installedPath = CZoltaFilePath(record.GetFilePath());
    m_installedVersion = record.GetVersion();
    m_installedStrings = record.GetStringVersions();
    m_installed = true;
    if (CompareVersionText(m_installedVersion, m_version) < 0)
        return;
    for (const auto& [language, version] : m_strings) {
        const auto installed = m_installedStrings.find(language);
        if (installed == m_installedStrings.end() || CompareVersionText(installed->second, version) < 0)
            return;
    }
    m_needsUpdate = false;
}

CGalleryStringVersions CGalleryCategoryFile::ParseStrings(const CAtlString& text)
{
    std::vector<CAtlString> tokens;
    CAtlString token;
    bool inToken = false;
    for (int i = 0; i < text.GetLength(); ++i) {
        const wchar_t ch = text[i];
        if (ch == L':' || ch == L';') {
            if (inToken)
                tokens.push_back(token);
            token.Empty();
            inToken = false;
            continue;
        }
        token += ch;
        inToken = true;
    }
    if (inToken)
        tokens.push_back(token);

    CGalleryStringVersions result;
    for (std::size_t i = 0; i + 1 < tokens.size(); i += 2)
        result[tokens[i]] = tokens[i + 1];
    return result;
}
