#include "gallery/CGalleryManifestIO.h"

#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryManifestWriter.h"
#include "gallery/GalleryContentFiles.h"
#include "foundation/IZOLTAXMLWriter.h"
#include "gallery/cache/ManifestCache.h"
#include "gallery/ManifestLock.h"
#include "foundation/SafeReplace.h"
#include "ziparchive/ZipHelpers.h"

#include <sys/stat.h>

namespace {

// The ".xbc" form needs no work in this system: the step exists and succeeds.
[[nodiscard]] HRESULT ConvertToXbc(const CAtlString&, const CAtlString&)
{
    return S_OK;
}

std::int64_t ModificationTime(const CAtlString& path)
{
    struct stat status {};
    if (::stat(ToFileSystemEncoding(path).constData(), &status) != 0) {
        return 0;
    }
    return static_cast<std::int64_t>(status.st_mtime);
}

[[nodiscard]] HRESULT SaveToFolder(CGalleryManifest& manifest, const CAtlString& path, bool refreshCache)
{
    const CZoltaDirectoryPath folder(path);
    if (!folder.Create()) {
        return E_FAIL;
    }
    const HRESULT result =
        CGalleryManifestIO::Save(manifest, folder.GetFile(L"imsmanifest.xml").GetPath().GetString(), refreshCache);
    if (FAILED(result)) {
        return result;
    }
    const CZoltaDirectoryPath source = CGalleryManifestIO::GetFolder(manifest);
    if (source.IsEmpty()) {
        return result;  // a tree that never had a folder has no files to bring along
    }
    return CopyContentFiles(manifest, source, folder);
}

[[nodiscard]] HRESULT SaveToGallery(CGalleryManifest& manifest, const CAtlString& path)
{
    const CZoltaDirectoryPath folder = GetTempFolder().GetUniqueChild(L"gallery");
    if (!folder.Create()) {
        return E_FAIL;
    }
    HRESULT result = SaveToFolder(manifest, folder.GetPath(), false);
    if (SUCCEEDED(result) && !ZipAddDirectory(folder, CZoltaFilePath(path))) {
        result = E_FAIL;
    }
    folder.Remove();
    return result;
}

[[nodiscard]] HRESULT SaveToXbc(CGalleryManifest& manifest, const CAtlString& path)
{
    const CZoltaFilePath gallery = MakeTempFile(L".gallery", L"SCVTemp");
    HRESULT result = SaveToGallery(manifest, gallery.GetPath());
    if (SUCCEEDED(result)) {
        result = ConvertToXbc(gallery.GetPath(), path);
    }
    gallery.Remove();
    return result;
}

[[nodiscard]] HRESULT SaveToXml(CGalleryManifest& manifest, const CAtlString& path, bool refreshCache)
{
    CManifestLockHolder lock;
    const CZoltaFilePath target(path);
    // Beside the target under a hidden name, so that no listing of records or content sees it.
    const CZoltaFilePath temporary = ReplacementFileFor(target);
    IZOLTAXMLWriter* writer = nullptr;
    HRESULT result = CreateFileWriter(&writer, temporary);
    if (FAILED(result)) {
        return result;
    }
    result = CGalleryManifestIO::WriteDocument(manifest, writer);
    const HRESULT written = writer->GetResult(nullptr);
    writer->Release();
    if (FAILED(result) || FAILED(written)) {
        // A cut document (a full disk) never takes the place of the whole one.
        temporary.Remove();
        return FAILED(result) ? result : written;
    }
    // The gallery's manifest is replaced in one step: a run killed now leaves the old or the new.
    if (!temporary.MoveOnto(target)) {
        temporary.Remove();
        return E_FAIL;
    }
    if (!manifest.m_extracted && refreshCache) {
        result = WriteManifestCache(manifest, path, GetManifestCachePath(path));
    }
    manifest.m_fileTime->m_seconds = ModificationTime(path);
    return result;
}

}  // namespace

HRESULT CGalleryManifestIO::WriteDocument(const CGalleryManifest& manifest, IZOLTAXMLWriter* writer)
{
    return CGalleryManifestWriter(manifest, writer).Write();
}

HRESULT CGalleryManifestIO::Save(CGalleryManifest& manifest, const wchar_t* path, bool refreshCache)
{
    if (!path) {
        return E_INVALIDARG;
    }
    if (!manifest.IsInitialized()) {
        return E_FAIL;
    }
    const CAtlString text(path);
    const CZoltaFilePath file(text);
    CAtlString extension = file.GetExtension();
    extension.MakeLower();
    if (file.IsFolder() || (!file.Exists() && extension.IsEmpty())) {
        return SaveToFolder(manifest, text, refreshCache);
    }
    if (extension == L".gallery") {
        return SaveToGallery(manifest, text);
    }
    if (extension == L".xbc") {
        return SaveToXbc(manifest, text);
    }
    if (extension == L".xml") {
        return SaveToXml(manifest, text, refreshCache);
    }
    return WriteManifestImage(manifest, file);
}
