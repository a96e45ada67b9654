#include "gallery/cache/ManifestCache.h"

#include "gallery/CGalleryManifest.h"
#include "gallery/GalleryPlaces.h"
#include "gallery/GalleryText.h"
#include "foundation/Trace.h"

#include <QString>

#include <sys/stat.h>
#include <utime.h>

namespace {

// Whole seconds of modification time; false when the file can't be asked.
bool ReadModificationTime(const CZoltaFilePath& path, std::int64_t& seconds)
{
    struct stat status {};
    if (::stat(ToFileSystemEncoding(path.GetPath()).constData(), &status) != 0)
        return false;
    seconds = static_cast<std::int64_t>(status.st_mtime);
    return true;
}

bool SetModificationTime(const CZoltaFilePath& path, std::int64_t seconds)
{
    struct utimbuf times {};
    times.actime = static_cast<time_t>(seconds);
    times.modtime = static_cast<time_t>(seconds);
    return ::utime(ToFileSystemEncoding(path.GetPath()).constData(), &times) == 0;
}

}  // namespace

CAtlString GetManifestCacheName(const CAtlString& xmlPath)
{
    const std::uint32_t hash = GalleryStringHash(xmlPath.GetString(), 5381);
    CAtlString name = CZoltaFilePath(xmlPath).GetFolder().GetName();
    name.AppendFormat(L"_%08x.cache", hash);
    return CAtlString(name.ToQString().toLower());
}

CZoltaFilePath GetManifestCachePath(const CAtlString& xmlPath)
{
    return GetUserGalleryFolder().GetFile(GetManifestCacheName(xmlPath));
}

HRESULT OpenManifestFromCache(CGalleryManifest& manifest, const CAtlString& xmlPath, const CZoltaFilePath& cachePath)
{
    if (!cachePath.Exists()) {
        Trace(L"CGalleryManifest::Open : cache %s file does not exist\n", cachePath.GetPath().GetString());
        return E_FAIL;
    }
    std::int64_t cacheTime = 0;
    std::int64_t xmlTime = 0;
    if (!ReadModificationTime(cachePath, cacheTime) || !ReadModificationTime(CZoltaFilePath(xmlPath), xmlTime))
        return E_FAIL;
    if (cacheTime < xmlTime) {
        Trace(L"CGalleryManifest::Open : cache %s file is older than XML file %s\n", cachePath.GetPath().GetString(),
              xmlPath.GetString());
        return E_FAIL;
    }
    HRESULT result = ReadManifestImage(manifest, cachePath);
    if (FAILED(result)) {
        Trace(L"CGalleryManifest::Open : error opening cache %s (HRESULT = 0x%x)\n", cachePath.GetPath().GetString(),
              static_cast<unsigned>(result));
        return result;
    }
    // The path kept in the image is where the XML was when the cache was written.
    result = manifest.SetPath(xmlPath.GetString());
    if (FAILED(result)) {
        static_cast<void>(manifest.Reset());  // the failure to tell is that of SetPath
        return result;
    }
    manifest.m_fileTime->m_seconds = xmlTime;
    return S_OK;
}

HRESULT WriteManifestCache(CGalleryManifest& manifest, const CAtlString& xmlPath, const CZoltaFilePath& cachePath)
{
    if (!cachePath.GetFolder().Create())
        return E_FAIL;
    const HRESULT result = WriteManifestImage(manifest, cachePath);
    if (FAILED(result)) {
        cachePath.Remove();
        return result;
    }
    // Seven seconds ahead of the XML: an XML file written within the same moment as its cache
    // must never make the cache look older.
    // The file time comes from the XML file; after a save that is the file just written.
    std::int64_t xmlTime = manifest.m_fileTime->m_seconds;
    ReadModificationTime(CZoltaFilePath(xmlPath), xmlTime);
    const std::int64_t stamp = xmlTime + 7;
    manifest.m_fileTime->m_seconds = stamp;
    if (!SetModificationTime(cachePath, stamp))
        return E_FAIL;
    return S_OK;
}
