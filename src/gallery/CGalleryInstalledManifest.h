#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "gallery/sax/ZOLTASaxContentHandler.h"
#include "foundation/ZoltaResult.h"

#include <unordered_map>

// The quick reader of a manifest's head: its identifier, its version and its string versions.
// It stops the parse as soon as it has identifier and version, so that the records of what is
// installed can be listed without reading whole trees.
class CGalleryInstalledManifest : public ZOLTASaxContentHandler {
public:
    CGalleryInstalledManifest() = default;
    ~CGalleryInstalledManifest() override;

    // Parses the head of the file. S_OK when identifier and version were found; a parse
    // failure as it came, E_FAIL when the document ended without both.
    [[nodiscard]] HRESULT Load(const CAtlString& path);

    const CAtlString& GetId() const { return m_id; }
    const CAtlString& GetVersion() const { return m_version; }
    const CAtlString& GetFilePath() const { return m_filePath; }
    // Language to the version of its strings, from `zoltagallery:stringversions`.
    const std::unordered_map<CAtlString, CAtlString>& GetStringVersions() const { return m_stringVersions; }

    [[nodiscard]] HRESULT StartElement(const ZOLTASaxString& prefix, const ZOLTASaxString& localName,
                                       const ZOLTASaxString& qName, const ZOLTASaxAttributes& attributes,
                                       const ZOLTASaxString& text, std::uint32_t position,
                                       std::uint32_t length) override;
    [[nodiscard]] HRESULT EndElement(const ZOLTASaxString& prefix, const ZOLTASaxString& localName,
                                     const ZOLTASaxString& qName, std::uint32_t position,
                                     std::uint32_t length) override;

private:
    int m_state = 0;
    bool m_haveId = false;
    bool m_haveVersion = false;
    HRESULT m_result = E_FAIL;
    CAtlString m_id;
    CAtlString m_version;
    CAtlString m_filePath;
    std::unordered_map<CAtlString, CAtlString> m_stringVersions;
};
