#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "foundation/CZoltaFilePath.h"
#include "foundation/ZoltaResult.h"

#include <cstddef>
#include <cstdint>

struct CGalleryManifest;

// The binary image of a manifest tree: the records of the tree with every pointer written as a
// 32-bit file offset, texts as zero-closed UTF-32. Reading takes the whole file in one buffer,
// checks its CRC and rebuilds the records in one arena beside it; texts and language blocks are
// used in place. Both blocks belong to the manifest's image buffer until the manifest is freed.

// The 64 bytes every image starts with.
extern const char kManifestImageMagic[64];
inline constexpr std::uint32_t kManifestImageCrcOffset = 64;
inline constexpr std::uint32_t kManifestImageRecordOffset = 68;

// Writes the image of `manifest` to `path` (created or truncated). The same tree always gives
// the same bytes.
[[nodiscard]] HRESULT WriteManifestImage(const CGalleryManifest& manifest, const CZoltaFilePath& path);

// Replaces the tree of `manifest` with the image in the file at `path`. E_FAIL for a short
// file, a wrong magic or a wrong CRC, E_POINTER for an offset outside the file; the manifest is
// left untouched on any failure. On success its path is the one kept in the image, its cache
// path is `path`, and it counts as unmodified.
[[nodiscard]] HRESULT ReadManifestImage(CGalleryManifest& manifest, const CZoltaFilePath& path);

// The same from bytes in memory (copied); `sourcePath` becomes the cache path.
[[nodiscard]] HRESULT ReadManifestImageFromMemory(CGalleryManifest& manifest, const void* bytes, std::size_t size,
                                                  const wchar_t* sourcePath);

// The CRC kept at offset 64: zlib's CRC-32 over the bytes from offset 68 to the end.
std::uint32_t ComputeManifestImageCrc(const void* image, std::size_t size);

// Whether a field value may be believed: not absent and inside the file.
inline bool IsImageOffsetInRange(std::uint32_t offset, std::size_t fileSize)
{
    return offset != 0 && offset < fileSize;
}

// The cache file of the XML manifest at `xmlPath`: "<folder name>_<hash>.cache", lower-cased,
// in the per-user gallery folder.
CZoltaFilePath GetManifestCachePath(const CAtlString& xmlPath);
CAtlString GetManifestCacheName(const CAtlString& xmlPath);

// Open with caching: the cache at `cachePath` is used if it exists, is not older than the XML
// file and reads cleanly; the manifest's path is then `xmlPath`. Any failure leaves the manifest
// as it was.
[[nodiscard]] HRESULT OpenManifestFromCache(CGalleryManifest& manifest, const CAtlString& xmlPath,
                                            const CZoltaFilePath& cachePath);

// Writes the cache of a manifest just read from or saved to `xmlPath` and dates it 7 seconds
// after the manifest's file time, so that an XML file written in the same second as its cache
// never makes the cache look stale.
[[nodiscard]] HRESULT WriteManifestCache(CGalleryManifest& manifest, const CAtlString& xmlPath,
                                         const CZoltaFilePath& cachePath);
