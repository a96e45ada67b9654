#include "gallery/cache/ManifestCache.h"

#include "gallery/CGalleryActivity.h"
#include "gallery/CGalleryFolder.h"
#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryMetadata.h"
#include "gallery/CGalleryOrganization.h"
#include "gallery/GalleryText.h"
#include "gallery/LanguageStringBlock.h"

#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <sys/mman.h>

namespace {

constexpr std::uint32_t kManifestRecordSize = 40;
constexpr std::uint32_t kOrganizationRecordSize = 24;
constexpr std::uint32_t kFolderRecordSize = 24;
constexpr std::uint32_t kActivityRecordSize = 16;
constexpr std::uint32_t kMetadataRecordSize = 48;
constexpr std::uint32_t kListRecordSize = 8;
constexpr std::uint32_t kActivityListRecordSize = 12;
constexpr std::uint32_t kHolderRecordSize = 4;
// Zero bytes behind the file in the read buffer: a text or a language block that runs to the
// end of a damaged file still ends inside the buffer (a block needs three zero units to end).
constexpr std::size_t kZeroTail = 16;
// Nesting of categories a file may have; deeper is taken for a loop of offsets.
constexpr int kMaxNesting = 4096;

constexpr std::size_t RoundUp(std::size_t bytes)
{
    return (bytes + 7) & ~static_cast<std::size_t>(7);
}

// One pass over the image. The counting pass (kBuild false) checks every offset and sums the
// arena the records need; the building pass lays the records out in that arena, every pointer
// resolved into the read buffer or the arena. Back references are set from the nesting itself,
// never taken from the file. The file bytes a pass may visit are limited to the file's size,
// so that offsets that share or loop back cannot make the walk run away.
template <bool kBuild>
class CManifestImageWalk {
public:
    CManifestImageWalk(const std::uint8_t* image, std::size_t size, char* arena, std::size_t arenaSize)
        : m_image(image),
          m_size(size),
          m_arena(arena),
          m_arenaSize(arenaSize)
    {}

    std::size_t ArenaUsed() const { return m_used; }
    // Whether the walk ran out of arena (the building pass only).
    bool Exhausted() const { return m_used > m_arenaSize; }

    struct Root {
        CGalleryMetadata* metadata = nullptr;
        LanguageStringBlock* stringVersions = nullptr;
        CGalleryOrganizationList* organizations = nullptr;
        const wchar_t* path = nullptr;
    };

    HRESULT Walk(Root& root)
    {
        const std::uint32_t base = kManifestImageRecordOffset;
        HRESULT result = Record(base, kManifestRecordSize);
        if (FAILED(result))
            return result;
        if (At(base + 4) != eGalleryObjectManifest)
            return E_FAIL;
        if (FAILED(result = Text(At(base + 8), &root.path)))
            return result;
        if (FAILED(result = Text(At(base + 12), nullptr)))
            return result;
        if (FAILED(result = Metadata(At(base + 0), &root.metadata)))
            return result;
        if (FAILED(result = Holder(At(base + 24), &root.stringVersions)))
            return result;
        const std::uint32_t organizations = At(base + 28);
        if (organizations == 0)
            return E_FAIL;
        return OrganizationList(organizations, &root.organizations);
    }

private:
    std::uint32_t At(std::uint32_t offset) const
    {
        std::uint32_t value;
        std::memcpy(&value, m_image + offset, sizeof(value));
        return value;
    }

    // A record of `bytes` at `offset`: inside the file, on a four-byte boundary, and within
    // what the walk may still visit.
    HRESULT Record(std::uint32_t offset, std::uint64_t bytes)
    {
        if (!IsImageOffsetInRange(offset, m_size) || offset % 4 != 0 || offset + bytes > m_size)
            return E_POINTER;
        m_visited += bytes;
        if (m_visited > m_size)
            return E_POINTER;
        return S_OK;
    }

    template <class T>
    T* Take(std::size_t count = 1)
    {
        const std::size_t at = m_used;
        m_used += RoundUp(sizeof(T) * count);
        if constexpr (kBuild) {
            if (m_used > m_arenaSize)
                return nullptr;
            return reinterpret_cast<T*>(m_arena + at);
        } else {
            return nullptr;
        }
    }

    HRESULT Text(std::uint32_t offset, const wchar_t** field)
    {
        const wchar_t* text = GalleryEmptyString();
        if (offset != 0) {
            if (!IsImageOffsetInRange(offset, m_size) || offset % 4 != 0)
                return E_POINTER;
            text = reinterpret_cast<const wchar_t*>(m_image + offset);
        }
        if (kBuild && field)
            *field = text;
        return S_OK;
    }

    HRESULT Holder(std::uint32_t offset, LanguageStringBlock** field)
    {
        LanguageStringBlock* block = Take<LanguageStringBlock>();
        if (kBuild && !block)
            return E_OUTOFMEMORY;
        if (offset == 0) {
            if constexpr (kBuild)
                *field = block;
            return S_OK;
        }
        HRESULT result = Record(offset, kHolderRecordSize);
        if (FAILED(result))
            return result;
        const wchar_t* data = nullptr;
        if (FAILED(result = Text(At(offset), &data)))
            return result;
        if constexpr (kBuild) {
            block->m_data = At(offset) ? data : nullptr;
            *field = block;
        }
        return S_OK;
    }

    HRESULT Metadata(std::uint32_t offset, CGalleryMetadata** field)
    {
        CGalleryMetadata* metadata = Take<CGalleryMetadata>();
        if (kBuild && !metadata)
            return E_OUTOFMEMORY;
        CGalleryMetadata scratch{};
        CGalleryMetadata& target = kBuild ? *metadata : scratch;
        HRESULT result = S_OK;
        if (offset != 0) {
            if (FAILED(result = Record(offset, kMetadataRecordSize)))
                return result;
            if (FAILED(result = Text(At(offset + 0), &target.m_identifier)) ||
                FAILED(result = Text(At(offset + 4), &target.m_version)) ||
                FAILED(result = Text(At(offset + 8), &target.m_sortKey)) ||
                FAILED(result = Text(At(offset + 12), &target.m_format)) ||
                FAILED(result = Text(At(offset + 28), &target.m_originalId)) ||
                FAILED(result = Text(At(offset + 32), &target.m_showInLanguages)) ||
                FAILED(result = Text(At(offset + 36), &target.m_hideInLanguages)))
                return result;
            target.m_creationTime = At(offset + 24);
        }
        if (FAILED(result = Holder(offset ? At(offset + 44) : 0, &target.m_maximumVersions)) ||
            FAILED(result = Holder(offset ? At(offset + 40) : 0, &target.m_minimumVersions)) ||
            FAILED(result = Holder(offset ? At(offset + 16) : 0, &target.m_titles)) ||
            FAILED(result = Holder(offset ? At(offset + 20) : 0, &target.m_keywords)))
            return result;
        if constexpr (kBuild) {
            if (offset == 0) {
                const wchar_t* empty = GalleryEmptyString();
                target.m_identifier = target.m_version = target.m_sortKey = target.m_format = empty;
                target.m_originalId = target.m_showInLanguages = target.m_hideInLanguages = empty;
            }
            *field = metadata;
        }
        return S_OK;
    }

    // The array of a list: `count` offsets at `offset`, each handed to `element` with its slot.
    template <class Node, class Element>
    HRESULT Array(std::uint32_t offset, std::uint32_t count, Node** slotArray, Element element)
    {
        if (count == 0)
            return S_OK;
        HRESULT result = Record(offset, std::uint64_t{count} * 4);
        if (FAILED(result))
            return result;
        for (std::uint32_t i = 0; i < count; ++i) {
            Node** slot = kBuild ? slotArray + i : nullptr;
            result = element(At(offset + i * 4), slot);
            if (FAILED(result))
                return result;
        }
        return S_OK;
    }

    template <class List>
    List* TakeList(std::uint32_t count)
    {
        List* list = Take<List>();
        auto** array = count ? Take<typename std::remove_pointer<decltype(list->m_array)>::type>(count) : nullptr;
        if constexpr (kBuild) {
            if (!list || (count && !array))
                return nullptr;
            list->m_array = array;
            list->m_count = count;
            list->m_capacity = count;
        }
        return list;
    }

    // A list record (array offset, count) and its elements, each read by `element`. Where the list
    // is `optional`, an offset of 0 stands for an empty one.
    template <class List, class ReadElement>
    HRESULT ObjectList(std::uint32_t offset, std::uint32_t recordSize, bool optional, List** field, ReadElement element)
    {
        std::uint32_t count = 0;
        if (offset != 0 || !optional) {
            const HRESULT result = Record(offset, recordSize);
            if (FAILED(result))
                return result;
            count = At(offset + 4);
            if (count && m_size / 4 < count)
                return E_POINTER;
        }
        List* list = TakeList<List>(count);
        if (kBuild && !list)
            return E_OUTOFMEMORY;
        if constexpr (kBuild)
            *field = list;
        return Array(offset ? At(offset) : 0, count, kBuild ? list->m_array : nullptr, element);
    }

    HRESULT OrganizationList(std::uint32_t offset, CGalleryOrganizationList** field)
    {
        return ObjectList(
            offset, kListRecordSize, false, field,
            [this](std::uint32_t element, CGalleryOrganization** slot) { return Organization(element, slot); });
    }

    HRESULT Organization(std::uint32_t offset, CGalleryOrganization** field)
    {
        HRESULT result = Record(offset, kOrganizationRecordSize);
        if (FAILED(result))
            return result;
        CGalleryOrganization* organization = Take<CGalleryOrganization>();
        if (kBuild && !organization)
            return E_OUTOFMEMORY;
        if constexpr (kBuild) {
            organization->m_type = eGalleryObjectOrganization;
            organization->m_readOnly = (At(offset + 12) & 0xFF) != 0;
            *field = organization;
        }
        if (FAILED(result = Metadata(At(offset), kBuild ? &organization->m_metadata : nullptr)) ||
            FAILED(result = NamedValues(At(offset + 8), kBuild ? &organization->m_namedValues : nullptr)))
            return result;
        const std::uint32_t manifest = At(offset + 16);
        if (manifest != 0 && !IsImageOffsetInRange(manifest, m_size))
            return E_POINTER;
        return FolderList(At(offset + 20), 0, nullptr, organization, kBuild ? &organization->m_items : nullptr);
    }

    HRESULT NamedValues(std::uint32_t offset, CGalleryNamedValueList** field)
    {
        std::uint32_t count = 0;
        HRESULT result = S_OK;
        if (offset != 0) {
            if (FAILED(result = Record(offset, kListRecordSize)))
                return result;
            count = At(offset + 4);
            if (count && m_size / 8 < count)
                return E_POINTER;
        }
        CGalleryNamedValueList* list = Take<CGalleryNamedValueList>();
        CGalleryNamedValue* values = count ? Take<CGalleryNamedValue>(count) : nullptr;
        if (kBuild && (!list || (count && !values)))
            return E_OUTOFMEMORY;
        if (count) {
            const std::uint32_t array = At(offset);
            if (FAILED(result = Record(array, std::uint64_t{count} * 8)))
                return result;
            for (std::uint32_t i = 0; i < count; ++i) {
                const wchar_t* name = nullptr;
                if (FAILED(result = Text(At(array + i * 8), &name)))
                    return result;
                if constexpr (kBuild)
                    values[i] = {name, static_cast<std::int32_t>(At(array + i * 8 + 4))};
            }
        }
        if constexpr (kBuild) {
            *list = {values, count, count};
            *field = list;
        }
        return S_OK;
    }

    HRESULT FolderList(std::uint32_t offset, int depth, CGalleryFolder* parent, CGalleryOrganization* organization,
                       CGalleryFolderList** field)
    {
        return ObjectList(offset, kListRecordSize, true, field, [&](std::uint32_t element, CGalleryFolder** slot) {
            return Folder(element, depth + 1, parent, organization, slot);
        });
    }

    HRESULT Folder(std::uint32_t offset, int depth, CGalleryFolder* parent, CGalleryOrganization* organization,
                   CGalleryFolder** field)
    {
        if (depth > kMaxNesting)
            return E_FAIL;
        HRESULT result = Record(offset, kFolderRecordSize);
        if (FAILED(result))
            return result;
        for (std::uint32_t back : {At(offset + 8), At(offset + 12)}) {
            if (back != 0 && !IsImageOffsetInRange(back, m_size))
                return E_POINTER;
        }
        CGalleryFolder* folder = Take<CGalleryFolder>();
        if (kBuild && !folder)
            return E_OUTOFMEMORY;
        if constexpr (kBuild) {
            folder->m_type = eGalleryObjectFolder;
            folder->m_parent = parent;
            folder->m_organization = organization;
            *field = folder;
        }
        if (FAILED(result = Metadata(At(offset), kBuild ? &folder->m_metadata : nullptr)) ||
            FAILED(result = FolderList(At(offset + 20), depth, folder, organization,
                                       kBuild ? &folder->m_children : nullptr)))
            return result;
        return ActivityList(At(offset + 16), folder, kBuild ? &folder->m_activities : nullptr);
    }

    HRESULT ActivityList(std::uint32_t offset, CGalleryFolder* folder, CGalleryActivityList** field)
    {
        return ObjectList(
            offset, kActivityListRecordSize, true, field,
            [&](std::uint32_t element, CGalleryActivity** slot) { return Activity(element, folder, slot); });
    }

    HRESULT Activity(std::uint32_t offset, CGalleryFolder* folder, CGalleryActivity** field)
    {
        HRESULT result = Record(offset, kActivityRecordSize);
        if (FAILED(result))
            return result;
        const std::uint32_t back = At(offset + 8);
        if (back != 0 && !IsImageOffsetInRange(back, m_size))
            return E_POINTER;
        CGalleryActivity* activity = Take<CGalleryActivity>();
        if (kBuild && !activity)
            return E_OUTOFMEMORY;
        if constexpr (kBuild) {
            activity->m_type = eGalleryObjectActivity;
            activity->m_parent = folder;
            *field = activity;
        }
        if (FAILED(result = Text(At(offset + 12), kBuild ? &activity->m_href : nullptr)))
            return result;
        return Metadata(At(offset), kBuild ? &activity->m_metadata : nullptr);
    }

    const std::uint8_t* m_image;
    std::size_t m_size;
    char* m_arena;
    std::size_t m_arenaSize;
    std::size_t m_used = 0;
    std::uint64_t m_visited = 0;
};

// Large read buffers are asked to be backed by large pages: tens of thousands of page faults
// would otherwise cost as much as the read itself. Only a hint.
void AskForLargePages(void* buffer, std::size_t size)
{
    constexpr std::uintptr_t kLargePage = 2u << 20;
    if (size < 4 * kLargePage)
        return;
    const auto begin = (reinterpret_cast<std::uintptr_t>(buffer) + kLargePage - 1) & ~(kLargePage - 1);
    const auto end = (reinterpret_cast<std::uintptr_t>(buffer) + size) & ~(kLargePage - 1);
    if (end > begin)
        ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

// Zeroed memory for the objects of an image, asked to be backed by large pages.
char* NewArena(std::size_t size)
{
    char* arena = static_cast<char*>(std::calloc(1, size));
    if (arena)
        AskForLargePages(arena, size);
    return arena;
}

// Reads `size` bytes into `buffer` in slices and computes the CRC from offset 68 on the way.
HRESULT ReadWithCrc(std::FILE* file, std::uint8_t* buffer, std::size_t size, std::uint32_t& crc)
{
    constexpr std::size_t kSlice = 256 * 1024;
    uLong running = crc32(0L, Z_NULL, 0);
    std::size_t done = 0;
    while (done < size) {
        const std::size_t want = std::min(kSlice, size - done);
        if (std::fread(buffer + done, 1, want, file) != want)
            return E_FAIL;
        const std::size_t from = std::max(done, std::size_t{kManifestImageRecordOffset});
        if (done + want > from)
            running = crc32(running, buffer + from, static_cast<uInt>(done + want - from));
        done += want;
    }
    crc = static_cast<std::uint32_t>(running);
    return S_OK;
}

// Checks the image in `buffer` (`size` bytes of file, zeros behind) and hands it with its
// arena to `manifest`. Takes the buffer in all cases.
HRESULT AdoptImage(CGalleryManifest& manifest, std::uint8_t* buffer, std::size_t size, const wchar_t* cachePath,
                   const std::uint32_t* knownCrc = nullptr)
{
    if (size < kManifestImageRecordOffset + kManifestRecordSize || size > 0xFFFFFFFFu ||
        std::memcmp(buffer, kManifestImageMagic, sizeof(kManifestImageMagic)) != 0)
    {
        std::free(buffer);
        return E_FAIL;
    }
    std::uint32_t storedCrc;
    std::memcpy(&storedCrc, buffer + kManifestImageCrcOffset, sizeof(storedCrc));
    if ((knownCrc ? *knownCrc : ComputeManifestImageCrc(buffer, size)) != storedCrc) {
        std::free(buffer);
        return E_FAIL;
    }

    // One building pass, over an arena of a first guess that holds the objects of any file with
    // texts in it (they take far less room than the file). A file that needs more is walked twice:
    // first to count, then to build.
    std::size_t arenaSize = size / 2 + 4096;
    char* arena = NewArena(arenaSize);
    if (!arena) {
        std::free(buffer);
        return E_OUTOFMEMORY;
    }
    typename CManifestImageWalk<true>::Root root;
    HRESULT result = S_OK;
    {
        CManifestImageWalk<true> build(buffer, size, arena, arenaSize);
        result = build.Walk(root);
        if (FAILED(result) && build.Exhausted()) {
            std::free(arena);
            arena = nullptr;
            typename CManifestImageWalk<false>::Root ignored;
            CManifestImageWalk<false> count(buffer, size, nullptr, 0);
            result = count.Walk(ignored);
            if (SUCCEEDED(result)) {
                arenaSize = count.ArenaUsed() ? count.ArenaUsed() : 1;
                arena = NewArena(arenaSize);
                result = arena ? CManifestImageWalk<true>(buffer, size, arena, arenaSize).Walk(root) : E_OUTOFMEMORY;
            }
        }
    }
    if (FAILED(result)) {
        // Nothing in the arena owns memory of its own: both blocks go as they are.
        std::free(arena);
        std::free(buffer);
        return result;
    }

    const bool extracted = manifest.m_extracted;
    static_cast<void>(manifest.Reset());  // IsInitialized() below tells whether it took
    if (!manifest.IsInitialized()) {
        std::free(arena);
        std::free(buffer);
        return E_OUTOFMEMORY;
    }
    // The records of the empty state make way for those of the image.
    CGalleryMetadata::Destroy(manifest.m_metadata);
    LanguageStringBlock::Destroy(manifest.m_stringVersions);
    CGalleryOrganizationList::Destroy(manifest.m_organizations);
    manifest.m_imageBuffer->Adopt(buffer, size + kZeroTail);
    manifest.m_imageBuffer->Adopt(arena, arenaSize);
    manifest.m_metadata = root.metadata;
    manifest.m_stringVersions = root.stringVersions;
    manifest.m_organizations = root.organizations;
    // The flag of a temporary extraction is the opener's to know: a file never sets it.
    manifest.m_extracted = extracted;
    manifest.m_modified = false;
    manifest.m_fileTime->m_seconds = 0;
    for (std::uint32_t i = 0; i < manifest.m_organizations->m_count; ++i)
        manifest.m_organizations->m_array[i]->m_manifest = &manifest;
    if (FAILED(result = manifest.SetPath(root.path)) ||
        FAILED(result = GalleryAssignText(manifest.m_cachePath, cachePath)))
        return result;
    return S_OK;
}

}  // namespace

HRESULT ReadManifestImageFromMemory(CGalleryManifest& manifest, const void* bytes, std::size_t size,
                                    const wchar_t* sourcePath)
{
    if (!bytes && size)
        return E_INVALIDARG;
    auto* buffer = static_cast<std::uint8_t*>(std::calloc(1, size + kZeroTail));
    if (!buffer)
        return E_OUTOFMEMORY;
    if (size)
        std::memcpy(buffer, bytes, size);
    return AdoptImage(manifest, buffer, size, sourcePath);
}

HRESULT ReadManifestImage(CGalleryManifest& manifest, const CZoltaFilePath& path)
{
    std::FILE* file = OpenFile(path, "rb");
    if (!file)
        return E_FAIL;
    char head[kManifestImageRecordOffset];
    if (std::fread(head, 1, sizeof(head), file) != sizeof(head) ||
        std::memcmp(head, kManifestImageMagic, sizeof(kManifestImageMagic)) != 0 || std::fseek(file, 0, SEEK_END) != 0)
    {
        std::fclose(file);
        return E_FAIL;
    }
    const long end = std::ftell(file);
    if (end < 0 || static_cast<unsigned long>(end) > 0xFFFFFFFFul || std::fseek(file, 0, SEEK_SET) != 0) {
        std::fclose(file);
        return E_FAIL;
    }
    const std::size_t size = static_cast<std::size_t>(end);
    auto* buffer = static_cast<std::uint8_t*>(std::malloc(size + kZeroTail));
    if (!buffer) {
        std::fclose(file);
        return E_OUTOFMEMORY;
    }
    AskForLargePages(buffer, size);
    std::memset(buffer + size, 0, kZeroTail);
    // One sequential read; each slice goes through the CRC while it is still in the cache.
    std::uint32_t crc = 0;
    const HRESULT read = ReadWithCrc(file, buffer, size, crc);
    std::fclose(file);
    if (FAILED(read)) {
        std::free(buffer);
        return read;
    }
    return AdoptImage(manifest, buffer, size, path.GetPath().GetString(), &crc);
}
