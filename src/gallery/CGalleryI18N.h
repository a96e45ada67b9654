#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "gallery/sax/ZOLTASaxContentHandler.h"
#include "foundation/ZoltaResult.h"

#include <memory>
#include <vector>

struct CGalleryManifest;
struct CGalleryMetadata;

// One translation catalogue ("i18n.xml"): the titles and keywords of one language for the
// objects of one or more manifests. Load it once, then fold it into any number of opened
// manifests with Apply. Nothing points into the file after Load: every text is copied.
class CGalleryI18N : public ZOLTASaxContentHandler {
public:
    struct ItemMetadata {
        CAtlString m_id;
        std::vector<CAtlString> m_titles;
        std::vector<CAtlString> m_keywords;
    };

    struct ManifestMetadata {
        CAtlString m_id;
        CAtlString m_languageStringVersion;
        std::vector<std::shared_ptr<ItemMetadata>> m_items;
    };

    CGalleryI18N() = default;
    ~CGalleryI18N() override;

    // ".xml": the file itself; ".zip": its entry "i18n.xml". Anything else, or an archive
    // without that entry, is E_FAIL; otherwise the parser's result.
    [[nodiscard]] HRESULT Load(const CAtlString& path);

    // Folds the texts of the catalogue's entry for this manifest (identifiers compared without
    // regard to case, first entry wins) into its string versions and into the metadata of
    // every category and activity. S_OK also when the catalogue has nothing for the manifest;
    // the first failing change stops the walk and is returned.
    [[nodiscard]] HRESULT Apply(CGalleryManifest& manifest) const;

    const CAtlString& GetLanguage() const { return m_language; }
    const std::vector<std::shared_ptr<ManifestMetadata>>& GetManifests() const { return m_manifests; }

    [[nodiscard]] HRESULT StartElement(const ZOLTASaxString& prefix, const ZOLTASaxString& localName,
                                       const ZOLTASaxString& qName, const ZOLTASaxAttributes& attributes,
                                       const ZOLTASaxString& text, std::uint32_t position,
                                       std::uint32_t length) override;

private:
    std::vector<std::shared_ptr<ManifestMetadata>> m_manifests;
    std::shared_ptr<ItemMetadata> m_currentItem;
    std::shared_ptr<ManifestMetadata> m_currentManifest;
    CAtlString m_language;
};
