#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "gallery/sax/ZOLTASaxContentHandler.h"
#include "foundation/ZoltaResult.h"

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

class IGalleryManifestOpenObserver;
struct CGalleryActivity;
struct CGalleryFolder;
struct CGalleryManifest;
struct CGalleryMetadata;
struct CGalleryOrganization;
struct LanguageStringBlock;

// Reads an imsmanifest.xml into a manifest's tree, for one parse. Elements are matched by
// their qualified names; a structural violation ends the parse with E_FAIL and leaves a
// partly filled tree for the caller to free. After every end tag the observer (if any) hears
// how far the parse has come, and a failure from it stops the parse.
class ZOLTASaxOpenXmlHandler : public ZOLTASaxContentHandler {
public:
    ZOLTASaxOpenXmlHandler(CGalleryManifest& manifest, IGalleryManifestOpenObserver* observer);
    ~ZOLTASaxOpenXmlHandler() override;
    ZOLTASaxOpenXmlHandler(const ZOLTASaxOpenXmlHandler&) = delete;
    ZOLTASaxOpenXmlHandler& operator=(const ZOLTASaxOpenXmlHandler&) = delete;

    [[nodiscard]] HRESULT StartElement(const ZOLTASaxString& prefix, const ZOLTASaxString& localName,
                                       const ZOLTASaxString& qName, const ZOLTASaxAttributes& attributes,
                                       const ZOLTASaxString& text, std::uint32_t position,
                                       std::uint32_t length) override;
    [[nodiscard]] HRESULT EndElement(const ZOLTASaxString& prefix, const ZOLTASaxString& localName,
                                     const ZOLTASaxString& qName, std::uint32_t position,
                                     std::uint32_t length) override;

    // Activities whose `resource` has not come yet.
    std::size_t GetWaitingCount() const { return m_waitingCount; }

private:
    [[nodiscard]] HRESULT StartItem(const ZOLTASaxAttributes& attributes);
    [[nodiscard]] HRESULT StartOrganization(const ZOLTASaxAttributes& attributes);
    [[nodiscard]] HRESULT StartResource(const ZOLTASaxAttributes& attributes);
    [[nodiscard]] HRESULT AddLanguageString(const ZOLTASaxAttributes& attributes, const ZOLTASaxString& text);
    [[nodiscard]] HRESULT OpenScratchBlock();
    void FreeScratchBlock();
    [[nodiscard]] HRESULT EndItem();
    [[nodiscard]] HRESULT EndScratchField(HRESULT (CGalleryMetadata::*setter)(const wchar_t*));
    CGalleryMetadata* InnermostMetadata() const;

    CGalleryManifest& m_manifest;
    IGalleryManifestOpenObserver* m_observer;

    CGalleryOrganization* m_organization = nullptr;
    CGalleryFolder* m_category = nullptr;
    CGalleryActivity* m_activity = nullptr;
    std::vector<CGalleryFolder*> m_categoryStack;
    CGalleryMetadata* m_metadata = nullptr;
    LanguageStringBlock* m_block = nullptr;
    LanguageStringBlock* m_scratch = nullptr;  // owned: sort key and version are read through it
    CAtlString m_languageText;

    // The waiting list, keyed by the file name an activity holds until its resource comes
    // (its identifierref): a resource finds its activities without a walk over all of them.
    std::unordered_map<std::wstring, std::vector<CGalleryActivity*>> m_waiting;
    std::size_t m_waitingCount = 0;

    bool m_inIdentifier = false;
    bool m_inGeneral = false;
    bool m_inRequirement = false;
    bool m_inOrComposite = false;
    bool m_isBrowser = false;
    bool m_inType = false;
    bool m_inName = false;
    CAtlString m_requirementName;
};
