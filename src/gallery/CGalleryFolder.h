#pragma once

#include "gallery/CGalleryActivity.h"
#include "gallery/CGalleryList.h"
#include "gallery/CGalleryObject.h"
#include "foundation/ZoltaResult.h"

struct CGalleryFolder;
struct CGalleryOrganization;

using CGalleryActivityList = CGalleryList<CGalleryActivity>;
using CGalleryFolderList = CGalleryList<CGalleryFolder>;

// A category of a gallery tree (kind 2): child categories and activities. Not to be mixed up
// with the installer's category records.
struct CGalleryFolder : CGalleryObject {
    CGalleryFolder* m_parent;  // null at the root of an organization
    CGalleryOrganization* m_organization;
    CGalleryActivityList* m_activities;
    CGalleryFolderList* m_children;

    // Allocates a zeroed record with metadata and both lists; E_INVALIDARG if `target` is
    // null or already set, E_OUTOFMEMORY with nothing left behind.
    [[nodiscard]] static HRESULT Create(CGalleryFolder** target);
    // Destroys the whole subtree (image data left alone) and nulls the pointer. The folder
    // must already be detached from its parent.
    static void Destroy(CGalleryFolder*& folder);

    // Attach a child and set its back references (for a folder: parent and, through the
    // subtree, organization).
    [[nodiscard]] HRESULT AddActivity(CGalleryActivity* activity);
    [[nodiscard]] HRESULT AddChild(CGalleryFolder* child);

    // Points this folder and every folder beneath it at `organization`.
    void SetOrganization(CGalleryOrganization* organization);
};
