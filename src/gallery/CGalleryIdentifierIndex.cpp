#include "gallery/CGalleryIdentifierIndex.h"

#include "gallery/CGalleryManifest.h"
#include "gallery/GalleryText.h"

#include <vector>

std::size_t GalleryIdentifierHash::operator()(std::wstring_view identifier) const
{
    std::uint32_t hash = 0;
    for (wchar_t c : identifier)
        hash = hash * 33u + static_cast<std::uint32_t>(c);
    return hash;
}

void CGalleryIdentifierIndex::Insert(CGalleryObject* object)
{
    m_objects.emplace(std::wstring_view(object->GetIdentifier()), object);
}

void CGalleryIdentifierIndex::InsertTree(CGalleryFolder* root)
{
    std::vector<CGalleryFolder*> pending{root};
    while (!pending.empty()) {
        CGalleryFolder* folder = pending.back();
        pending.pop_back();
        Insert(folder);
        for (std::uint32_t i = 0; i < folder->m_activities->m_count; ++i)
            Insert(folder->m_activities->m_array[i]);
        for (std::uint32_t i = folder->m_children->m_count; i-- > 0;)
            pending.push_back(folder->m_children->m_array[i]);
    }
}

void CGalleryIdentifierIndex::Build(const CGalleryManifest& manifest)
{
    m_objects.clear();
    const CGalleryOrganizationList* organizations = manifest.GetOrganizations();
    if (!organizations)
        return;
    for (std::uint32_t i = 0; i < organizations->m_count; ++i)
        Insert(organizations->m_array[i]);
    for (std::uint32_t i = 0; i < organizations->m_count; ++i) {
        const CGalleryFolderList* items = organizations->m_array[i]->m_items;
        for (std::uint32_t j = 0; j < items->m_count; ++j)
            InsertTree(items->m_array[j]);
    }
}

CGalleryObject* CGalleryIdentifierIndex::Find(const wchar_t* identifier) const
{
    if (!identifier)
        return nullptr;
    const auto found = m_objects.find(std::wstring_view(identifier));
    return found == m_objects.end() ? nullptr : found->second;
}
