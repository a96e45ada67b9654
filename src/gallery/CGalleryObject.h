#pragma once

#include "libZoltaAtl/CAtlStringA.h"

#include <cstdint>

struct CGalleryMetadata;

// Kinds of gallery objects, the value of CGalleryObject::m_type.
enum eGalleryObjectType : std::int32_t {
    eGalleryObjectActivity = 1,
    eGalleryObjectFolder = 2,
    eGalleryObjectOrganization = 3,
    eGalleryObjectManifest = 4,
    // Display objects of the authoring side; reserved here.
    eGalleryObjectRepositoryRoot = 8,
    eGalleryObjectManifestEntry = 10,
    eGalleryObjectOldFormatCategory = 11,
};

// Common head of every node of a gallery tree. Nodes are plain records without virtual
// operations, so that a whole tree can be laid out as a memory image and used in place
// (the manifest cache): each node record starts with this head.
struct CGalleryObject {
    CGalleryMetadata* m_metadata;  // never null once the node is created
    std::int32_t m_type;           // eGalleryObjectType

    // The metadata identifier, or "" without metadata.
    const wchar_t* GetIdentifier() const;

    // A text of the tree as the gallery files hold it: UTF-8, and U+FFFE for a blank text,
    // because an empty element would vanish on reading.
    static CAtlStringA FileText(const wchar_t* text);
};
