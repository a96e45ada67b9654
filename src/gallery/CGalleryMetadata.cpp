#include "gallery/CGalleryMetadata.h"

#include "gallery/GalleryText.h"

#include <cstdlib>

namespace {

// Text and block fields in one place, so that creation, copying and freeing stay in step.
const wchar_t* CGalleryMetadata::*const kTextFields[] = {
    &CGalleryMetadata::m_identifier,      &CGalleryMetadata::m_version,    &CGalleryMetadata::m_sortKey,
    &CGalleryMetadata::m_format,          &CGalleryMetadata::m_originalId, &CGalleryMetadata::m_showInLanguages,
    &CGalleryMetadata::m_hideInLanguages,
};

LanguageStringBlock* CGalleryMetadata::*const kBlockFields[] = {
    &CGalleryMetadata::m_titles,
    &CGalleryMetadata::m_keywords,
    &CGalleryMetadata::m_minimumVersions,
    &CGalleryMetadata::m_maximumVersions,
};

}  // namespace

HRESULT CGalleryMetadata::Create(CGalleryMetadata** target)
{
    if (!target || *target)
        return E_INVALIDARG;
    auto* metadata = static_cast<CGalleryMetadata*>(std::calloc(1, sizeof(CGalleryMetadata)));
    if (!metadata)
        return E_OUTOFMEMORY;
    for (auto field : kTextFields)
        metadata->*field = GalleryEmptyString();
    for (auto field : kBlockFields) {
        if (FAILED(LanguageStringBlock::Create(&(metadata->*field)))) {
            Destroy(metadata);
            return E_OUTOFMEMORY;
        }
    }
    *target = metadata;
    return S_OK;
}

void CGalleryMetadata::Destroy(CGalleryMetadata*& metadata)
{
    if (!metadata)
        return;
    for (auto field : kTextFields)
        GalleryFreeText(metadata->*field);
    for (auto field : kBlockFields)
        LanguageStringBlock::Destroy(metadata->*field);
    GalleryFreeRecord(metadata);
    metadata = nullptr;
}

HRESULT CGalleryMetadata::SetIdentifier(const wchar_t* text)
{
    return GalleryAssignText(m_identifier, text);
}

HRESULT CGalleryMetadata::SetVersion(const wchar_t* text)
{
    return GalleryAssignText(m_version, text);
}

HRESULT CGalleryMetadata::SetSortKey(const wchar_t* text)
{
    return GalleryAssignText(m_sortKey, text);
}

HRESULT CGalleryMetadata::SetFormat(const wchar_t* text)
{
    return GalleryAssignText(m_format, text);
}

HRESULT CGalleryMetadata::SetOriginalId(const wchar_t* text)
{
    return GalleryAssignText(m_originalId, text);
}

HRESULT CGalleryMetadata::SetShowInLanguages(const wchar_t* text)
{
    return GalleryAssignText(m_showInLanguages, text);
}

HRESULT CGalleryMetadata::SetHideInLanguages(const wchar_t* text)
{
    return GalleryAssignText(m_hideInLanguages, text);
}

HRESULT CGalleryMetadata::CopyFrom(const CGalleryMetadata& other)
{
    if (&other == this)
        return S_OK;
    for (auto field : kTextFields) {
        // The source field may lie in an image; a copy is taken either way.
        const HRESULT hr = GalleryAssignText(this->*field, other.*field);
        if (FAILED(hr))
            return hr;
    }
    for (auto field : kBlockFields) {
        if (!(this->*field) && FAILED(LanguageStringBlock::Create(&(this->*field))))
            return E_OUTOFMEMORY;
        if (other.*field) {
            const HRESULT hr = (this->*field)->CopyFrom(*(other.*field));
            if (FAILED(hr))
                return hr;
        } else {
            (this->*field)->Clear();
        }
    }
    m_creationTime = other.m_creationTime;
    return S_OK;
}
