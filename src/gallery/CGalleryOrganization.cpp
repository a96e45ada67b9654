#include "gallery/CGalleryOrganization.h"

#include "gallery/CGalleryMetadata.h"
#include "gallery/GalleryText.h"

#include <cstdlib>

HRESULT CGalleryNamedValueList::Create(CGalleryNamedValueList** target)
{
    if (!target || *target)
        return E_INVALIDARG;
    auto* list = static_cast<CGalleryNamedValueList*>(std::calloc(1, sizeof(CGalleryNamedValueList)));
    if (!list)
        return E_OUTOFMEMORY;
    *target = list;
    return S_OK;
}

void CGalleryNamedValueList::Destroy(CGalleryNamedValueList*& list)
{
    if (!list)
        return;
    for (std::uint32_t i = 0; i < list->m_count; ++i)
        GalleryFreeText(list->m_array[i].m_name);
    GalleryFreeRecord(list->m_array);
    GalleryFreeRecord(list);
    list = nullptr;
}

HRESULT CGalleryOrganization::Create(CGalleryOrganization** target)
{
    if (!target || *target)
        return E_INVALIDARG;
    auto* organization = static_cast<CGalleryOrganization*>(std::calloc(1, sizeof(CGalleryOrganization)));
    if (!organization)
        return E_OUTOFMEMORY;
    organization->m_type = eGalleryObjectOrganization;
    if (FAILED(CGalleryMetadata::Create(&organization->m_metadata)) ||
        FAILED(CGalleryNamedValueList::Create(&organization->m_namedValues)) ||
        FAILED(CGalleryFolderList::Create(&organization->m_items)))
    {
        Destroy(organization);
        return E_OUTOFMEMORY;
    }
    *target = organization;
    return S_OK;
}

void CGalleryOrganization::Destroy(CGalleryOrganization*& organization)
{
    if (!organization)
        return;
    if (organization->m_items) {
        for (std::uint32_t i = 0; i < organization->m_items->m_count; ++i)
            CGalleryFolder::Destroy(organization->m_items->m_array[i]);
        CGalleryFolderList::Destroy(organization->m_items);
    }
    CGalleryNamedValueList::Destroy(organization->m_namedValues);
    CGalleryMetadata::Destroy(organization->m_metadata);
    GalleryFreeRecord(organization);
    organization = nullptr;
}

HRESULT CGalleryOrganization::AddItem(CGalleryFolder* folder)
{
    const HRESULT hr = m_items->Add(folder);
    if (SUCCEEDED(hr)) {
        folder->m_parent = nullptr;
        folder->SetOrganization(this);
    }
    return hr;
}
