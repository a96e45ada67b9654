#include "gallery/CGalleryActivity.h"

#include "gallery/CGalleryMetadata.h"
#include "gallery/GalleryText.h"

#include <cstdlib>

HRESULT CGalleryActivity::Create(CGalleryActivity** target)
{
    if (!target || *target)
        return E_INVALIDARG;
    auto* activity = static_cast<CGalleryActivity*>(std::calloc(1, sizeof(CGalleryActivity)));
    if (!activity)
        return E_OUTOFMEMORY;
    activity->m_type = eGalleryObjectActivity;
    activity->m_href = GalleryEmptyString();
    if (FAILED(CGalleryMetadata::Create(&activity->m_metadata))) {
        Destroy(activity);
        return E_OUTOFMEMORY;
    }
    *target = activity;
    return S_OK;
}

void CGalleryActivity::Destroy(CGalleryActivity*& activity)
{
    if (!activity)
        return;
    CGalleryMetadata::Destroy(activity->m_metadata);
    GalleryFreeText(activity->m_href);
    GalleryFreeRecord(activity);
    activity = nullptr;
}

HRESULT CGalleryActivity::SetHref(const wchar_t* href)
{
    return GalleryAssignText(m_href, href);
}
