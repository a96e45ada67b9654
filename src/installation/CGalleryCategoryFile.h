#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "foundation/CZoltaFilePath.h"
#include "foundation/ZoltaResult.h"

#include <unordered_map>

namespace tinyxml2 {
class XMLElement;
}

class CGalleryInstalledManifest;

// Language to version of its string package.
using CGalleryStringVersions = std::unordered_map<CAtlString, CAtlString>;

// One content file of a category as the source offers it, and what is installed of it.
class CGalleryCategoryFile {
public:
    const CAtlString& GetName() const { return m_name; }
    const CAtlString& GetId() const { return m_id; }
    const CZoltaFilePath& GetInstalledPath() const { return m_installedPath; }
    bool IsInstalled() const { return m_installed; }
    bool NeedsUpdate() const { return m_needsUpdate; }
    const CAtlString& GetInstalledVersion() const { return m_installedVersion; }
    const CAtlString& GetVersion() const { return m_version; }
    const CGalleryStringVersions& GetInstalledStrings() const { return m_installedStrings; }
    const CGalleryStringVersions& GetStrings() const { return m_strings; }

    // Text, `id`, `version` (each required and not empty) and `strings` of a file element.
    [[nodiscard]] HRESULT Read(const tinyxml2::XMLElement& element);
    // Takes what the install record says, and decides whether the file is current.
    void SetInstalled(const CGalleryInstalledManifest& record);

    // "lang:version;lang:version", ":" and ";" in any mix; a trailing single token is dropped
    // and the later of two equal languages wins.
    static CGalleryStringVersions ParseStrings(const CAtlString& text);

private:
    CAtlString m_name;
    CAtlString m_id;
    CZoltaFilePath m_installedPath;
    bool m_installed = false;
    bool m_needsUpdate = true;
    CAtlString m_installedVersion;
    CAtlString m_version;
    CGalleryStringVersions m_installedStrings;
    CGalleryStringVersions m_strings;
};

// Plain character-by-character comparison of version texts, as wcscmp, null counting as empty.
int CompareVersionText(const wchar_t* a, const wchar_t* b);

// An attribute of an element as a wide string (UTF-8 decoded): E_INVALIDARG when it is missing,
// E_FAIL when it is empty.
[[nodiscard]] HRESULT ReadRequiredAttribute(const tinyxml2::XMLElement& element, const char* name, CAtlString& value);
