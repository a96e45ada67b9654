#pragma once

#include "gallery/CGalleryImageRegistry.h"
#include "gallery/CGalleryList.h"
#include "gallery/CGalleryObject.h"
#include "gallery/CGalleryOrganization.h"
#include "gallery/LanguageStringBlock.h"
#include "foundation/ZoltaResult.h"

#include <cstdint>

using CGalleryOrganizationList = CGalleryList<CGalleryOrganization>;

// Modification time of a manifest file when it was opened, in whole seconds.
struct CGalleryFileTime {
    std::int64_t m_seconds;
};

// The root of a gallery tree (kind 4): the organizations of one imsmanifest.xml. A stack or
// heap object; its construction already creates metadata, string versions, the empty
// organization list, the image buffer and the file-time object (IsInitialized tells whether
// memory sufficed). Not copyable: trees move between manifests node by node.
struct CGalleryManifest : CGalleryObject {
    const wchar_t* m_path;                  // full path of the XML manifest
    const wchar_t* m_cachePath;             // cache file it was read from, or empty
    bool m_modified;                        // the tree differs from the file
    bool m_extracted;                       // lives in a temporary extraction
    CGalleryImageBuffer* m_imageBuffer;     // read buffer(s) of a cached tree, else empty
    LanguageStringBlock* m_stringVersions;  // per language, version of the language strings
    CGalleryOrganizationList* m_organizations;
    CGalleryFileTime* m_fileTime;

    CGalleryManifest();
    ~CGalleryManifest();
    CGalleryManifest(const CGalleryManifest&) = delete;
    CGalleryManifest& operator=(const CGalleryManifest&) = delete;

    // A new heap manifest; E_INVALIDARG if `target` is null or already set.
    [[nodiscard]] static HRESULT Create(CGalleryManifest** target);
    static void Destroy(CGalleryManifest*& manifest);

    // Creates whatever is missing of the empty state; S_OK when all is there.
    [[nodiscard]] HRESULT Initialize();
    bool IsInitialized() const;
    // Frees the whole tree, the texts, the blocks and, after all objects are gone, the
    // image buffers. Leaves an uninitialised record of kind 4.
    void FreeTree();
    // FreeTree, then Initialize: an empty manifest without a path.
    [[nodiscard]] HRESULT Reset();

    CGalleryOrganizationList* GetOrganizations() const { return m_organizations; }
    // Attaches an organization and points it at this manifest.
    [[nodiscard]] HRESULT AddOrganization(CGalleryOrganization* organization);

    const wchar_t* GetPath() const;
    [[nodiscard]] HRESULT SetPath(const wchar_t* path);
    bool IsModified() const { return m_modified; }
    void SetModified(bool modified = true) { m_modified = modified; }
};
