#include "gallery/CGalleryManifestIO.h"

#include "foundation/RunTempFolder.h"
#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryMergeIndex.h"
#include "gallery/CGalleryOrganization.h"
#include "gallery/GalleryContentFiles.h"
#include "gallery/GalleryText.h"
#include "gallery/cache/ManifestCache.h"
#include "gallery/ZOLTASaxOpenXmlHandler.h"
#include "gallery/sax/ZOLTASaxParser.h"
#include "ziparchive/ZipHelpers.h"

#include <cstdio>
#include <ctime>
#include <sys/stat.h>

namespace {

std::int64_t ModificationTime(const CAtlString& path)
{
    struct stat status {};
    if (::stat(ToFileSystemEncoding(path).constData(), &status) != 0) {
        return 0;
    }
    return static_cast<std::int64_t>(status.st_mtime);
}

// The ".xbc" form needs no work in this system: the step exists and succeeds.
[[nodiscard]] HRESULT ConvertXbc(const CAtlString&, const CAtlString&)
{
    return S_OK;
}

CAtlString LowerExtension(const CAtlString& path)
{
    CAtlString extension = CZoltaFilePath(path).GetExtension();
    extension.MakeLower();
    return extension;
}

// A manifest on a medium that can't be written keeps every organization read-only.
void ProbeWriteAccess(CGalleryManifest& manifest, const CAtlString& path)
{
    std::FILE* file = OpenFile(path, "r+");
    if (file) {
        std::fclose(file);
        return;
    }
    CGalleryOrganizationList& organizations = *manifest.GetOrganizations();
    for (std::uint32_t i = 0; i < organizations.GetCount(); ++i) {
        organizations.GetAt(i)->m_readOnly = true;
    }
}

[[nodiscard]] HRESULT OpenXml(CGalleryManifest& manifest, const CAtlString& path,
                              IGalleryManifestOpenObserver* observer, bool useCache)
{
    manifest.m_fileTime->m_seconds = 0;
    if (!CZoltaFilePath(path).Exists()) {
        const HRESULT stored = manifest.SetPath(path.GetString());
        return FAILED(stored) ? stored : S_FALSE;
    }
    HRESULT result = E_FAIL;
    if (useCache) {  // a failed cache attempt only means that the XML is parsed
        result = OpenManifestFromCache(manifest, path, GetManifestCachePath(path));
    }
    if (FAILED(result)) {
        ZOLTASaxOpenXmlHandler handler(manifest, observer);
        result = ZOLTASaxParser::ParseFile(ToFileSystemEncoding(path).constData(), handler);
        if (FAILED(result)) {
            return result;
        }
        result = manifest.SetPath(path.GetString());
        if (FAILED(result)) {
            return result;
        }
        manifest.m_fileTime->m_seconds = ModificationTime(path);
        manifest.SetModified(false);
        if (useCache) {
            result = WriteManifestCache(manifest, path, GetManifestCachePath(path));
        }
    }
    ProbeWriteAccess(manifest, path);
    return result;
}

}  // namespace

HRESULT CGalleryManifestIO::Open(CGalleryManifest& manifest, const wchar_t* path,
                                 IGalleryManifestOpenObserver* observer, bool useCache)
{
    if (!path) {
        return E_INVALIDARG;
    }
    if (!manifest.IsInitialized() && FAILED(manifest.Initialize())) {
        return E_OUTOFMEMORY;
    }
    const CAtlString text(path);
    if (CZoltaFilePath(text).IsFolder()) {
        const CZoltaFilePath child = CZoltaDirectoryPath(text).GetFile(L"imsmanifest.xml");
        if (!child.Exists()) {
            const HRESULT stored = manifest.SetPath(child.GetPath().GetString());
            return FAILED(stored) ? stored : S_FALSE;
        }
        return Open(manifest, child.GetPath().GetString(), observer, useCache);
    }
    if (IsArchiveName(text)) {
        CZoltaDirectoryPath folder;
        const bool whole = UnpackArchive(CZoltaFilePath(text), folder);
        return OpenUnpacked(manifest, folder, whole, observer, useCache);
    }
    const CAtlString extension = LowerExtension(text);
    if (extension == L".xbc") {
        const CZoltaFilePath converted = MakeTempFile(L".gallery", L"SCVTemp");
        const HRESULT result = ConvertXbc(text, converted.GetPath());
        if (FAILED(result)) {
            return result;
        }
        return Open(manifest, converted.GetPath().GetString(), observer, useCache);
    }
    if (extension != L".xml") {
        return ReadManifestImage(manifest, CZoltaFilePath(text));
    }
    return OpenXml(manifest, text, observer, useCache);
}

bool CGalleryManifestIO::IsArchiveName(const CAtlString& path)
{
    const CAtlString extension = LowerExtension(path);
    return extension == L".zip" || extension == L".gallery";
}

bool CGalleryManifestIO::UnpackArchive(const CZoltaFilePath& archive, CZoltaDirectoryPath& folder)
{
    folder = RunTempFolder::TakeFolder(L"gallery");
    // The files may be moved into a gallery as they are: like copies, they carry the time of
    // their writing, not the archive's.
    return !folder.IsEmpty() && ZipExtractAll(archive, folder, false);
}

HRESULT CGalleryManifestIO::OpenUnpacked(CGalleryManifest& manifest, const CZoltaDirectoryPath& folder, bool whole,
                                         IGalleryManifestOpenObserver* observer, bool useCache)
{
    if (!manifest.IsInitialized() && FAILED(manifest.Initialize())) {
        return E_OUTOFMEMORY;
    }
    manifest.m_extracted = true;
    if (folder.IsEmpty()) {
        return E_FAIL;
    }
    // The path points into the extraction at once, so that Close finds the folder to delete
    // even when nothing could be extracted.
    HRESULT result = manifest.SetPath(folder.GetFile(L"imsmanifest.xml").GetPath().GetString());
    if (FAILED(result)) {
        return result;
    }
    // A package that can't be extracted whole is no package: installing part of it would leave
    // files its record does not describe, or a record without its files.
    if (!whole) {
        return E_FAIL;
    }
    return Open(manifest, folder.GetPath().GetString(), observer, useCache);
}

void CGalleryManifestIO::Close(CGalleryManifest& manifest)
{
    const CZoltaDirectoryPath folder = GetFolder(manifest);
    const bool extracted = manifest.m_extracted;
    CGalleryMergeIndex::Forget(manifest);
    static_cast<void>(manifest.Reset());  // closing goes on: the tree is freed whatever Reset says
    // Only a folder of the temporary area is ever taken along: the flag may come from a file.
    const CZoltaDirectoryPath temporary = GetTempFolder();
    if (extracted && !folder.IsEmpty() && folder != temporary && IsPathInside(folder.GetPath(), temporary.GetPath())) {
        RunTempFolder::GiveBack(folder);
    }
}

CZoltaDirectoryPath CGalleryManifestIO::GetFolder(const CGalleryManifest& manifest)
{
    const CAtlString path(manifest.GetPath());
    if (path.IsEmpty()) {
        return CZoltaDirectoryPath();
    }
    return CZoltaFilePath(path).GetFolder();
}

CZoltaDirectoryPath CGalleryManifestIO::GetUninstallFolder(const CGalleryManifest& manifest)
{
    CZoltaDirectoryPath folder = GetFolder(manifest);
    if (!folder.IsEmpty()) {
        folder.Append(L"Uninstall");
    }
    return folder;
}

CAtlString CGalleryManifestIO::GetInstallRecordName(const wchar_t* identifier)
{
    const std::wstring forward(identifier ? identifier : L"");
    const std::wstring reversed(forward.rbegin(), forward.rend());
    CAtlString name;
    name.Format(L"imsmanifest%x%x.xml", GalleryStringHash(forward.c_str()), GalleryStringHash(reversed.c_str()));
    return name;
}

CZoltaFilePath CGalleryManifestIO::GetInstallRecordPath(const CZoltaDirectoryPath& uninstallFolder,
                                                        const wchar_t* identifier)
{
    return uninstallFolder.GetFile(GetInstallRecordName(identifier));
}
