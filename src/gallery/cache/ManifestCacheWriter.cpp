#include "gallery/cache/ManifestCache.h"

#include "gallery/CGalleryActivity.h"
#include "gallery/CGalleryFolder.h"
#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryMetadata.h"
#include "gallery/CGalleryOrganization.h"
#include "gallery/LanguageStringBlock.h"
#include "foundation/ZoltaBufferStream.h"
#include "foundation/ZoltaFileStreams.h"
#include "foundation/ZoltaStreamHelpers.h"

#include <zlib.h>

#include <cstring>

const char kManifestImageMagic[64] = {
    'Z', 'O', 'L', 'T', 'A', ' ', 'S', 'c', 'r',  'i',  'v',  'e',    'n', 't', ' ', 'B', 'i', 'n', 'a', 'r', 'y', ' ',
    'M', 'a', 'n', 'i', 'f', 'e', 's', 't', '\r', '\n', 'F',  'o',    'r', 'm', 'a', 't', ':', ' ', '2', '0', '0', '6',
    '-', '1', '1', '-', '2', '7', '(', 'a', ')',  '\r', '\n', '\x0C', '.', '.', '.', '.', '.', '.', '.', '.',
};

std::uint32_t ComputeManifestImageCrc(const void* image, std::size_t size)
{
    if (size <= kManifestImageRecordOffset)
        return static_cast<std::uint32_t>(crc32(0L, Z_NULL, 0));
    const auto* bytes = static_cast<const Bytef*>(image) + kManifestImageRecordOffset;
    std::size_t left = size - kManifestImageRecordOffset;
    uLong crc = crc32(0L, Z_NULL, 0);
    // zlib takes 32-bit lengths: feed it in slices.
    while (left > 0) {
        const uInt slice = left > (1u << 30) ? (1u << 30) : static_cast<uInt>(left);
        crc = crc32(crc, bytes, slice);
        bytes += slice;
        left -= slice;
    }
    return static_cast<std::uint32_t>(crc);
}

namespace {

// Lays the tree out depth first. Each record goes out with its reference fields zero; every
// field is then pointed at the current end and what it refers to is written there. The order
// of the fields is fixed, so that one tree always gives one byte sequence.
class CManifestImageWriter {
public:
    explicit CManifestImageWriter(IStream* stream)
        : m_stream(stream)
    {}

    [[nodiscard]] HRESULT Write(const CGalleryManifest& manifest)
    {
        Bytes(kManifestImageMagic, sizeof(kManifestImageMagic));
        Word(0);  // the CRC, patched once everything is out
        WriteManifest(manifest);
        return m_result;
    }

private:
    bool Ok() const { return SUCCEEDED(m_result); }

    void Check(HRESULT result)
    {
        if (FAILED(result) && Ok())
            m_result = result;
    }

    std::uint32_t Position() { return GetPosition(m_stream); }

    void Word(std::uint32_t value)
    {
        if (Ok())
            Check(WriteWord(m_stream, value));
    }

    void Bytes(const void* data, std::uint32_t size)
    {
        if (Ok())
            Check(WriteBytes(m_stream, data, size));
    }

    void Record(const std::uint32_t* words, std::uint32_t count) { Bytes(words, count * 4); }

    // Points the field at `base + field` to the end, where its target is written next.
    void Link(std::uint32_t base, std::uint32_t field)
    {
        if (Ok())
            Check(PatchWord(m_stream, base, field, Position()));
    }

    void Patch(std::uint32_t base, std::uint32_t field, std::uint32_t value)
    {
        if (Ok())
            Check(PatchWord(m_stream, base, field, value));
    }

    void Text(std::uint32_t base, std::uint32_t field, const wchar_t* text)
    {
        if (Ok())
            Check(PatchString(m_stream, base, field, text));
    }

    void Holder(std::uint32_t base, std::uint32_t field, const LanguageStringBlock* block)
    {
        Link(base, field);
        const std::uint32_t holder = Position();
        Word(0);
        Link(holder, 0);
        if (!block) {
            Word(0);
            return;
        }
        Bytes(block->GetData(), static_cast<std::uint32_t>(block->GetSizeInChars() * sizeof(wchar_t)));
    }

    void WriteMetadata(std::uint32_t owner, const CGalleryMetadata* metadata)
    {
        Link(owner, 0);
        const std::uint32_t base = Position();
        const std::uint32_t record[12] = {0, 0, 0, 0, 0, 0, metadata ? metadata->m_creationTime : 0, 0, 0, 0, 0, 0};
        Record(record, 12);
        const CGalleryMetadata* m = metadata;
        Text(base, 0, m ? m->m_identifier : nullptr);
        Text(base, 4, m ? m->m_version : nullptr);
        Text(base, 8, m ? m->m_sortKey : nullptr);
        Text(base, 12, m ? m->m_format : nullptr);
        Text(base, 28, m ? m->m_originalId : nullptr);
        Text(base, 32, m ? m->m_showInLanguages : nullptr);
        Text(base, 36, m ? m->m_hideInLanguages : nullptr);
        Holder(base, 44, m ? m->m_maximumVersions : nullptr);
        Holder(base, 40, m ? m->m_minimumVersions : nullptr);
        Holder(base, 16, m ? m->m_titles : nullptr);
        Holder(base, 20, m ? m->m_keywords : nullptr);
    }

    void WriteManifest(const CGalleryManifest& manifest)
    {
        const std::uint32_t base = Position();
        const std::uint32_t flags = (manifest.m_modified ? 1u : 0u) | (manifest.m_extracted ? 0x100u : 0u);
        const std::uint32_t record[10] = {0, eGalleryObjectManifest, 0, 0, flags, 0, 0, 0, 0, 0};
        Record(record, 10);
        Text(base, 8, manifest.GetPath());
        Text(base, 12, L"");
        Link(base, 20);
        Word(0);
        Link(base, 28);
        WriteOrganizationList(manifest.m_organizations, base);
        WriteMetadata(base, manifest.m_metadata);
        Holder(base, 24, manifest.m_stringVersions);
    }

    // Writes the array of a list whose record starts at `listBase`, calling `element` for each
    // entry after pointing its slot at the end.
    template <class Node, class Element>
    void WriteArray(std::uint32_t listBase, Node* const* array, std::uint32_t count, Element element)
    {
        if (count == 0)
            return;
        Link(listBase, 0);
        const std::uint32_t slotArray = Position();
        for (std::uint32_t i = 0; i < count; ++i)
            Word(0);
        for (std::uint32_t i = 0; i < count && Ok(); ++i) {
            Link(slotArray, i * 4);
            element(array[i]);
        }
    }

    void WriteOrganizationList(const CGalleryOrganizationList* list, std::uint32_t manifest)
    {
        const std::uint32_t count = list ? list->m_count : 0;
        const std::uint32_t base = Position();
        const std::uint32_t record[2] = {0, count};
        Record(record, 2);
        WriteArray(
            base, list ? list->m_array : nullptr, count,
            [this, manifest](const CGalleryOrganization* organization) { WriteOrganization(*organization, manifest); });
    }

    void WriteOrganization(const CGalleryOrganization& organization, std::uint32_t manifest)
    {
        const std::uint32_t base = Position();
        const std::uint32_t record[6] = {0, eGalleryObjectOrganization, 0, organization.m_readOnly ? 1u : 0u, 0, 0};
        Record(record, 6);
        // The named values are never kept: an empty list.
        Link(base, 8);
        Word(0);
        Word(0);
        Link(base, 20);
        WriteFolderList(organization.m_items, 0, base);
        Patch(base, 16, manifest);
        WriteMetadata(base, organization.m_metadata);
    }

    void WriteFolderList(const CGalleryFolderList* list, std::uint32_t parent, std::uint32_t organization)
    {
        const std::uint32_t count = list ? list->m_count : 0;
        const std::uint32_t base = Position();
        const std::uint32_t record[2] = {0, count};
        Record(record, 2);
        WriteArray(
            base, list ? list->m_array : nullptr, count,
            [this, parent, organization](const CGalleryFolder* folder) { WriteFolder(*folder, parent, organization); });
    }

    void WriteFolder(const CGalleryFolder& folder, std::uint32_t parent, std::uint32_t organization)
    {
        const std::uint32_t base = Position();
        const std::uint32_t record[6] = {0, eGalleryObjectFolder, parent, organization, 0, 0};
        Record(record, 6);
        WriteMetadata(base, folder.m_metadata);
        Link(base, 20);
        WriteFolderList(folder.m_children, base, organization);
        Link(base, 16);
        WriteActivityList(folder.m_activities, base);
    }

    void WriteActivityList(const CGalleryActivityList* list, std::uint32_t folder)
    {
        const std::uint32_t count = list ? list->m_count : 0;
        const std::uint32_t base = Position();
        // The capacity equals the count: the first addition after loading moves the array out.
        const std::uint32_t record[3] = {0, count, count};
        Record(record, 3);
        WriteArray(base, list ? list->m_array : nullptr, count,
                   [this, folder](const CGalleryActivity* activity) { WriteActivity(*activity, folder); });
    }

    void WriteActivity(const CGalleryActivity& activity, std::uint32_t folder)
    {
        const std::uint32_t base = Position();
        const std::uint32_t record[4] = {0, eGalleryObjectActivity, folder, 0};
        Record(record, 4);
        Text(base, 12, activity.m_href);
        WriteMetadata(base, activity.m_metadata);
    }

    IStream* m_stream;
    HRESULT m_result = S_OK;
};

}  // namespace

HRESULT WriteManifestImage(const CGalleryManifest& manifest, const CZoltaFilePath& path)
{
    if (!manifest.IsInitialized())
        return E_FAIL;
    // The image is laid out in memory, where its thousands of seeks cost nothing, and goes to
    // the file in one write.
    CComPtr<IStreamOnBuffer> image = CreateBufferStream();
    if (!image)
        return E_OUTOFMEMORY;
    HRESULT result = CManifestImageWriter(image.p).Write(manifest);
    if (FAILED(result))
        return result;
    if (image->GetLength() > 0xFFFFFFF0u)
        return E_FAIL;  // beyond what 32-bit offsets reach
    const std::uint32_t crc = ComputeManifestImageCrc(image->GetData(), image->GetLength());
    result = PatchWord(image.p, 0, kManifestImageCrcOffset, crc);
    if (FAILED(result))
        return result;

    auto* file = new CWritableFileStream(path);
    if (!file->IsValid()) {
        file->Release();
        return E_FAIL;
    }
    std::uint32_t written = 0;
    const std::uint32_t length = static_cast<std::uint32_t>(image->GetLength());
    result = file->Write(image->GetData(), length, &written);
    if (SUCCEEDED(result) && written != length)
        result = E_FAIL;
    const HRESULT status = file->GetWriteStatus();
    file->Release();
    return FAILED(result) ? result : status;
}
