#pragma once

#include "CAtlString.h"
#include "ZoltaResult.h"

struct CGalleryManifest;

// Where manifest opening and saving meet the binary manifest cache (ManifestCache.h). A failed
// cache attempt only means that the XML is parsed.

// Tries the cache that belongs to the XML manifest at `xmlPath`; S_OK only when the manifest
// was filled from it (its path then being `xmlPath`).
[[nodiscard]] HRESULT TryOpenFromCache(CGalleryManifest& manifest, const CAtlString& xmlPath);

// Writes the cache of the manifest just parsed from, or saved to, `xmlPath`.
[[nodiscard]] HRESULT WriteCache(CGalleryManifest& manifest, const CAtlString& xmlPath);

// The binary branch of Open and Save: a file of the cache format at `path`.
[[nodiscard]] HRESULT OpenBinaryManifest(CGalleryManifest& manifest, const CAtlString& path);
[[nodiscard]] HRESULT SaveBinaryManifest(CGalleryManifest& manifest, const CAtlString& path);
