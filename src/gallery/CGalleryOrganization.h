#pragma once

#include "gallery/CGalleryFolder.h"
#include "gallery/CGalleryObject.h"
#include "foundation/ZoltaResult.h"

#include <cstdint>

struct CGalleryManifest;

// A text with a 32-bit value; organizations keep a list of them for the format only.
struct CGalleryNamedValue {
    const wchar_t* m_name;
    std::int32_t m_value;
};

// Array (std::malloc or image), count, capacity.
struct CGalleryNamedValueList {
    CGalleryNamedValue* m_array;
    std::uint32_t m_count;
    std::uint32_t m_capacity;

    [[nodiscard]] static HRESULT Create(CGalleryNamedValueList** target);
    // Frees the names, the array and the record (image data left alone).
    static void Destroy(CGalleryNamedValueList*& list);
    std::uint32_t GetCount() const { return m_count; }
};

// An organization of a manifest (kind 3): the root categories of one tree.
struct CGalleryOrganization : CGalleryObject {
    CGalleryNamedValueList* m_namedValues;  // always empty in this system
    bool m_readOnly;
    CGalleryManifest* m_manifest;
    CGalleryFolderList* m_items;  // root categories

    // Allocates a zeroed record with metadata and lists; E_INVALIDARG if `target` is null
    // or already set, E_OUTOFMEMORY with nothing left behind.
    [[nodiscard]] static HRESULT Create(CGalleryOrganization** target);
    // Destroys the organization and its whole tree (image data left alone), nulls the
    // pointer. It must already be detached from its manifest.
    static void Destroy(CGalleryOrganization*& organization);

    // Attaches a root category: no parent, this organization throughout its subtree.
    [[nodiscard]] HRESULT AddItem(CGalleryFolder* folder);
};
