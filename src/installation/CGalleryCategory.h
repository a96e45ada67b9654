#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "installation/CGalleryCategoryFile.h"
#include "foundation/ZoltaResult.h"

#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tinyxml2 {
class XMLElement;
}

class CGalleryInstalledManifest;

// Installed records by manifest identifier.
using CGalleryInstalledRecords = std::unordered_map<CAtlString, std::shared_ptr<CGalleryInstalledManifest>>;

// What to do with a category in a run.
enum eGalleryCategoryAction {
    eGalleryCategoryActionNone = 0,
    eGalleryCategoryActionInstall = 1,
    eGalleryCategoryActionInstallWithoutStrings = 2,
    eGalleryCategoryActionUpdate = 3,
    eGalleryCategoryActionUninstall = 4,
};

// One category a source offers: its files and string packages, with what of it is installed
// and what a run shall do with it.
class CGalleryCategory {
public:
    const std::vector<CGalleryCategoryFile>& GetFiles() const { return m_files; }
    // Language to the file name of the string package.
    const std::unordered_map<CAtlString, CAtlString>& GetStrings() const { return m_strings; }
    const CAtlString& GetId() const { return m_id; }
    const std::vector<std::pair<CAtlString, CAtlString>>& GetTitles() const { return m_titles; }
    // The title that best matches `language` (the current language when null); the first one when
    // none matches, empty when there are none.
    CAtlString GetTitle(const wchar_t* language = nullptr) const;
    const CAtlString& GetVersion() const { return m_version; }
    const CAtlString& GetInstalledVersion() const { return m_installedVersion; }
    bool IsInstalled() const { return m_installed; }
    bool IsUpdateAvailable() const { return m_updateAvailable; }
    [[nodiscard]] HRESULT GetResult() const { return m_result; }
    void SetResult(HRESULT result) { m_result = result; }
    bool IsFinished() const { return m_finished; }
    void SetFinished(bool finished) { m_finished = finished; }
    int GetAction() const { return m_action; }
    void SetAction(int action) { m_action = action; }
    int GetCount() const { return m_count; }
    int GetSize() const { return m_size; }
    int GetDiskSize() const { return m_diskSize; }

    // Reads one category element against the installed records; stops at the first failure.
    [[nodiscard]] HRESULT Read(const tinyxml2::XMLElement& element, const CGalleryInstalledRecords& installed);

private:
    [[nodiscard]] HRESULT ReadTitles(const tinyxml2::XMLElement& element);
    [[nodiscard]] HRESULT ReadFiles(const tinyxml2::XMLElement& element, const CGalleryInstalledRecords& installed);
    [[nodiscard]] HRESULT ReadStrings(const tinyxml2::XMLElement& element);

    std::vector<CGalleryCategoryFile> m_files;
    std::unordered_map<CAtlString, CAtlString> m_strings;
    CAtlString m_id;
    std::vector<std::pair<CAtlString, CAtlString>> m_titles;
    CAtlString m_version;
    CAtlString m_installedVersion;
    bool m_installed = false;
    bool m_updateAvailable = false;
    HRESULT m_result = S_FALSE;
    bool m_finished = false;
    int m_action = eGalleryCategoryActionNone;
    int m_count = 0;
    int m_size = 0;
    int m_diskSize = 0;
};

// The size text for the interface: "%d bytes", "%0.1lf KB", "%d KB", "%0.1lf MB", "%d MB" or
// "%0.1f GB"; a fraction only below ten of a unit.
CAtlString FormatByteSize(unsigned int bytes);
