#include "gallery/CGalleryFolder.h"

#include "gallery/CGalleryMetadata.h"
#include "gallery/GalleryText.h"

#include <cstdlib>
#include <vector>

HRESULT CGalleryFolder::Create(CGalleryFolder** target)
{
    if (!target || *target)
        return E_INVALIDARG;
    auto* folder = static_cast<CGalleryFolder*>(std::calloc(1, sizeof(CGalleryFolder)));
    if (!folder)
        return E_OUTOFMEMORY;
    folder->m_type = eGalleryObjectFolder;
    if (FAILED(CGalleryMetadata::Create(&folder->m_metadata)) ||
        FAILED(CGalleryActivityList::Create(&folder->m_activities)) ||
        FAILED(CGalleryFolderList::Create(&folder->m_children)))
    {
        Destroy(folder);
        return E_OUTOFMEMORY;
    }
    *target = folder;
    return S_OK;
}

void CGalleryFolder::Destroy(CGalleryFolder*& folder)
{
    if (!folder)
        return;
    // Without recursion: a hostile manifest may nest categories very deeply.
    std::vector<CGalleryFolder*> pending{folder};
    folder = nullptr;
    while (!pending.empty()) {
        CGalleryFolder* current = pending.back();
        pending.pop_back();
        if (current->m_children) {
            for (std::uint32_t i = 0; i < current->m_children->m_count; ++i)
                pending.push_back(current->m_children->m_array[i]);
            CGalleryFolderList::Destroy(current->m_children);
        }
        if (current->m_activities) {
            for (std::uint32_t i = 0; i < current->m_activities->m_count; ++i)
                CGalleryActivity::Destroy(current->m_activities->m_array[i]);
            CGalleryActivityList::Destroy(current->m_activities);
        }
        CGalleryMetadata::Destroy(current->m_metadata);
        GalleryFreeRecord(current);
    }
}

HRESULT CGalleryFolder::AddActivity(CGalleryActivity* activity)
{
    const HRESULT hr = m_activities->Add(activity);
    if (SUCCEEDED(hr))
        activity->m_parent = this;
    return hr;
}

HRESULT CGalleryFolder::AddChild(CGalleryFolder* child)
{
    const HRESULT hr = m_children->Add(child);
    if (SUCCEEDED(hr)) {
        child->m_parent = this;
        child->SetOrganization(m_organization);
    }
    return hr;
}

void CGalleryFolder::SetOrganization(CGalleryOrganization* organization)
{
    std::vector<CGalleryFolder*> pending{this};
    while (!pending.empty()) {
        CGalleryFolder* current = pending.back();
        pending.pop_back();
        current->m_organization = organization;
        for (std::uint32_t i = 0; i < current->m_children->m_count; ++i)
            pending.push_back(current->m_children->m_array[i]);
    }
}
