#include "gallery/CGalleryMergeIndex.h"

#include "gallery/GalleryText.h"

#include <cwchar>
#include <mutex>

namespace {

std::uint32_t IdentifierHash(const CGalleryObject* object)
{
    return GalleryStringHash(object->GetIdentifier(), 0);
}

std::mutex& RegistryLock()
{
    static std::mutex lock;
    return lock;
}

std::unordered_map<const CGalleryManifest*, std::shared_ptr<CGalleryMergeIndex>>& Registry()
{
    static std::unordered_map<const CGalleryManifest*, std::shared_ptr<CGalleryMergeIndex>> registry;
    return registry;
}

}  // namespace

std::shared_ptr<CGalleryMergeIndex> CGalleryMergeIndex::ForManifest(const CGalleryManifest& manifest)
{
    std::lock_guard<std::mutex> hold(RegistryLock());
    std::shared_ptr<CGalleryMergeIndex>& index = Registry()[&manifest];
    if (!index) {
        index = std::make_shared<CGalleryMergeIndex>();
    }
    return index;
}

void CGalleryMergeIndex::Forget(const CGalleryManifest& manifest)
{
    std::lock_guard<std::mutex> hold(RegistryLock());
    Registry().erase(&manifest);
}

void CGalleryMergeIndex::TakeSignature(ListTable& table, const ListView& list)
{
    table.count = list.count;
    table.array = list.array;
    table.first = list.count ? list.At(0) : nullptr;
    table.last = list.count ? list.At(list.count - 1) : nullptr;
    table.firstHash = table.first ? IdentifierHash(table.first) : 0;
    table.lastHash = table.last ? IdentifierHash(table.last) : 0;
}

bool CGalleryMergeIndex::InStep(const ListTable& table, const ListView& list)
{
    if (!table.built || table.count != list.count || table.array != list.array) {
        return false;
    }
    if (list.count == 0) {
        return true;
    }
    const CGalleryObject* first = list.At(0);
    const CGalleryObject* last = list.At(list.count - 1);
    return first == table.first && last == table.last && IdentifierHash(first) == table.firstHash &&
           IdentifierHash(last) == table.lastHash;
}

void CGalleryMergeIndex::Rebuild(ListTable& table, const ListView& list)
{
    table.entries.clear();
    table.entries.reserve(list.count);
    for (std::uint32_t i = 0; i < list.count; ++i) {
        // emplace keeps an existing key: the first child of an identifier wins.
        table.entries.emplace(list.At(i)->GetIdentifier(), Entry{list.At(i), i});
    }
    TakeSignature(table, list);
    table.built = true;
}

CGalleryObject* CGalleryMergeIndex::Confirm(const ListTable& table, const ListView& list, const wchar_t* identifier)
{
    const auto found = table.entries.find(std::wstring_view(identifier));
    if (found == table.entries.end()) {
        return nullptr;
    }
    const Entry& entry = found->second;
    if (entry.position < list.count && list.At(entry.position) == entry.node &&
        std::wcscmp(entry.node->GetIdentifier(), identifier) == 0)
    {
        return entry.node;
    }
    return reinterpret_cast<CGalleryObject*>(-1);
}

CGalleryObject* CGalleryMergeIndex::FindObject(const ListView& list, const wchar_t* identifier)
{
    if (!identifier) {
        return nullptr;
    }
    ListTable& table = m_lists[list.key];
    if (!InStep(table, list)) {
        Rebuild(table, list);
    }
    CGalleryObject* found = Confirm(table, list, identifier);
    if (found == reinterpret_cast<CGalleryObject*>(-1)) {
        // The list changed under the table in a way its signature missed.
        Rebuild(table, list);
        found = Confirm(table, list, identifier);
        if (found == reinterpret_cast<CGalleryObject*>(-1)) {
            found = nullptr;
        }
    }
    return found;
}

void CGalleryMergeIndex::NoteAppendedObject(const ListView& list)
{
    const auto found = m_lists.find(list.key);
    if (found == m_lists.end()) {
        return;
    }
    ListTable& table = found->second;
    if (!table.built || list.count == 0 || table.count + 1 != list.count) {
        table.built = false;
        return;
    }
    // In step before the addition: the first child and the old last one must still stand.
    if (table.count > 0 && (list.At(0) != table.first || list.At(table.count - 1) != table.last)) {
        table.built = false;
        return;
    }
    CGalleryObject* added = list.At(list.count - 1);
    table.entries.emplace(added->GetIdentifier(), Entry{added, list.count - 1});
    TakeSignature(table, list);
}
