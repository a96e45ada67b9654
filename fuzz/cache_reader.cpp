// Opens arbitrary bytes as a binary manifest image, walks whatever tree comes out, edits it a
// little as a gallery user would, and frees it.
#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryMetadata.h"
#include "gallery/LanguageStringBlock.h"
#include "gallery/cache/ManifestCache.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <vector>

namespace {

std::size_t g_sum = 0;

void Touch(const wchar_t* text)
{
    if (!text)
        std::abort();
    g_sum += std::wcslen(text);
}

void Touch(const LanguageStringBlock* block)
{
    if (!block)
        std::abort();
    for (int i = 0; i < block->GetCount(); ++i) {
        Touch(block->GetKey(i));
        Touch(block->GetValue(i));
    }
    Touch(block->Lookup(L"en"));
}

void Touch(const CGalleryMetadata* metadata)
{
    if (!metadata)
        std::abort();
    for (const wchar_t* text : {metadata->m_identifier, metadata->m_version, metadata->m_sortKey, metadata->m_format,
                                metadata->m_originalId, metadata->m_showInLanguages, metadata->m_hideInLanguages})
        Touch(text);
    for (const LanguageStringBlock* block :
         {metadata->m_titles, metadata->m_keywords, metadata->m_minimumVersions, metadata->m_maximumVersions})
        Touch(block);
}

void Touch(CGalleryFolder* folder)
{
    Touch(folder->m_metadata);
    for (std::uint32_t i = 0; i < folder->m_activities->m_count; ++i) {
        CGalleryActivity* activity = folder->m_activities->m_array[i];
        if (activity->m_parent != folder)
            std::abort();
        Touch(activity->m_href);
        Touch(activity->m_metadata);
    }
    for (std::uint32_t i = 0; i < folder->m_children->m_count; ++i) {
        if (folder->m_children->m_array[i]->m_parent != folder)
            std::abort();
        Touch(folder->m_children->m_array[i]);
    }
}

void OpenAndWalk(const std::uint8_t* data, std::size_t size)
{
    CGalleryManifest manifest;
    if (FAILED(ReadManifestImageFromMemory(manifest, data, size, L"fuzz.cache")))
        return;
    Touch(manifest.GetPath());
    Touch(manifest.m_metadata);
    Touch(manifest.m_stringVersions);
    for (std::uint32_t i = 0; i < manifest.m_organizations->m_count; ++i) {
        CGalleryOrganization* organization = manifest.m_organizations->m_array[i];
        if (organization->m_manifest != &manifest)
            std::abort();
        Touch(organization->m_metadata);
        for (std::uint32_t j = 0; j < organization->m_items->m_count; ++j)
            Touch(organization->m_items->m_array[j]);
    }
    // Edits that replace image data with heap data, which the free must tell apart.
    static_cast<void>(manifest.m_metadata->SetIdentifier(L"urn:edited"));  // only the free is under test
    static_cast<void>(manifest.m_metadata->m_titles->Add(L"en", L"edited"));
    if (manifest.m_organizations->m_count > 0) {
        CGalleryOrganization* organization = manifest.m_organizations->RemoveAt(0);
        CGalleryOrganization::Destroy(organization);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    OpenAndWalk(data, size);
    // Most mutations break the CRC: try each input once more with a correct one, so that the
    // offsets themselves meet the fix-up walk.
    if (size >= 68) {
        std::vector<std::uint8_t> sealed(data, data + size);
        const std::uint32_t crc = ComputeManifestImageCrc(sealed.data(), sealed.size());
        std::memcpy(sealed.data() + 64, &crc, sizeof(crc));
        OpenAndWalk(sealed.data(), sealed.size());
    }
    return 0;
}
