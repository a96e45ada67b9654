#pragma once

#include "gallery/CGalleryObject.h"
#include "foundation/ZoltaResult.h"

struct CGalleryFolder;

// One content file of a category (kind 1).
struct CGalleryActivity : CGalleryObject {
    CGalleryFolder* m_parent;
    const wchar_t* m_href;  // file name relative to the manifest folder

    // Allocates a zeroed record with its metadata; E_INVALIDARG if `target` is null or
    // already set, E_OUTOFMEMORY with nothing left behind.
    [[nodiscard]] static HRESULT Create(CGalleryActivity** target);
    // Frees metadata, text and record (image data left alone) and nulls the pointer. The
    // activity must already be detached from its folder.
    static void Destroy(CGalleryActivity*& activity);

    [[nodiscard]] HRESULT SetHref(const wchar_t* href);
};
