#pragma once

#include "foundation/ZoltaResult.h"

#include <cstdint>
#include <string>
#include <unordered_map>

class IZOLTAXMLWriter;
struct CGalleryActivity;
struct CGalleryFolder;
struct CGalleryManifest;
struct CGalleryObject;
struct CGalleryOrganization;
struct LanguageStringBlock;

// Writes one imsmanifest.xml. The "idN" identifiers of the file come from one counter for the
// whole document; they mean nothing beyond it (an object's stable identifier is the lom:entry
// of its metadata). Each activity's second number, its resource, is remembered so that the
// resources section can refer to it.
class CGalleryManifestWriter {
public:
    CGalleryManifestWriter(const CGalleryManifest& manifest, IZOLTAXMLWriter* writer);

    // The first failing write ends the document and gives its code.
    [[nodiscard]] HRESULT Write();

private:
    void WriteStringVersions(const LanguageStringBlock& versions);
    void WriteMetadataElement(const CGalleryObject& object);
    void WriteOrganization(const CGalleryOrganization& organization);
    void WriteCategory(const CGalleryFolder& category);
    void WriteActivity(const CGalleryActivity& activity);
    void WriteTitle(const LanguageStringBlock* titles);
    void WriteResources(const CGalleryFolder& category);

    void Start(const char* name);
    void End(const char* name);
    void Attribute(const char* name, const char* value);
    void Text(const char* text);
    std::string NextId();

    const CGalleryManifest& m_manifest;
    IZOLTAXMLWriter* m_writer;
    HRESULT m_result = S_OK;
    std::uint32_t m_counter = 1;
    std::unordered_map<const CGalleryActivity*, std::uint32_t> m_resourceIds;
};
