#include "ManifestCacheSeam.h"

#include "CGalleryManifest.h"
#include "ManifestCache.h"

HRESULT TryOpenFromCache(CGalleryManifest& manifest, const CAtlString& xmlPath)
{
    return OpenManifestFromCache(manifest, xmlPath, GetManifestCachePath(xmlPath));
}

HRESULT WriteCache(CGalleryManifest& manifest, const CAtlString& xmlPath)
{
    return WriteManifestCache(manifest, xmlPath, GetManifestCachePath(xmlPath));
}

HRESULT OpenBinaryManifest(CGalleryManifest& manifest, const CAtlString& path)
{
    return ReadManifestImage(manifest, CZoltaFilePath(path));
}

HRESULT SaveBinaryManifest(CGalleryManifest& manifest, const CAtlString& path)
{
    return WriteManifestImage(manifest, CZoltaFilePath(path));
}
