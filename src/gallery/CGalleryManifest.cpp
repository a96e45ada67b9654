#include "gallery/CGalleryManifest.h"

#include "gallery/CGalleryMetadata.h"
#include "gallery/GalleryText.h"

#include <new>

CGalleryManifest::CGalleryManifest()
    : CGalleryObject{nullptr, eGalleryObjectManifest},
      m_path(GalleryEmptyString()),
      m_cachePath(GalleryEmptyString()),
      m_modified(false),
      m_extracted(false),
      m_imageBuffer(nullptr),
      m_stringVersions(nullptr),
      m_organizations(nullptr),
      m_fileTime(nullptr)
{
    static_cast<void>(Initialize());  // IsInitialized() tells the owner whether it took
}

CGalleryManifest::~CGalleryManifest()
{
    FreeTree();
}

HRESULT CGalleryManifest::Create(CGalleryManifest** target)
{
    if (!target || *target)
        return E_INVALIDARG;
    auto* manifest = new (std::nothrow) CGalleryManifest;
    if (!manifest)
        return E_OUTOFMEMORY;
    if (!manifest->IsInitialized()) {
        delete manifest;
        return E_OUTOFMEMORY;
    }
    *target = manifest;
    return S_OK;
}

void CGalleryManifest::Destroy(CGalleryManifest*& manifest)
{
    delete manifest;
    manifest = nullptr;
}

HRESULT CGalleryManifest::Initialize()
{
    m_type = eGalleryObjectManifest;
    if (!m_path)
        m_path = GalleryEmptyString();
    if (!m_cachePath)
        m_cachePath = GalleryEmptyString();
    if (!m_metadata && FAILED(CGalleryMetadata::Create(&m_metadata)))
        return E_OUTOFMEMORY;
    if (!m_stringVersions && FAILED(LanguageStringBlock::Create(&m_stringVersions)))
        return E_OUTOFMEMORY;
    if (!m_organizations && FAILED(CGalleryOrganizationList::Create(&m_organizations)))
        return E_OUTOFMEMORY;
    if (!m_imageBuffer && !(m_imageBuffer = new (std::nothrow) CGalleryImageBuffer))
        return E_OUTOFMEMORY;
    if (!m_fileTime && !(m_fileTime = new (std::nothrow) CGalleryFileTime{0}))
        return E_OUTOFMEMORY;
    return S_OK;
}

bool CGalleryManifest::IsInitialized() const
{
    return m_metadata && m_stringVersions && m_organizations && m_imageBuffer && m_fileTime;
}

void CGalleryManifest::FreeTree()
{
    if (m_organizations) {
        for (std::uint32_t i = 0; i < m_organizations->m_count; ++i)
            CGalleryOrganization::Destroy(m_organizations->m_array[i]);
        CGalleryOrganizationList::Destroy(m_organizations);
    }
    CGalleryMetadata::Destroy(m_metadata);
    LanguageStringBlock::Destroy(m_stringVersions);
    GalleryFreeText(m_path);
    GalleryFreeText(m_cachePath);
    // Last: everything above may have pointed into these images.
    delete m_imageBuffer;
    m_imageBuffer = nullptr;
    delete m_fileTime;
    m_fileTime = nullptr;
    m_modified = false;
    m_extracted = false;
}

HRESULT CGalleryManifest::Reset()
{
    FreeTree();
    return Initialize();
}

HRESULT CGalleryManifest::AddOrganization(CGalleryOrganization* organization)
{
    const HRESULT hr = m_organizations->Add(organization);
    if (SUCCEEDED(hr))
        organization->m_manifest = this;
    return hr;
}

const wchar_t* CGalleryManifest::GetPath() const
{
    return m_path ? m_path : GalleryEmptyString();
}

HRESULT CGalleryManifest::SetPath(const wchar_t* path)
{
    return GalleryAssignText(m_path, path);
}
