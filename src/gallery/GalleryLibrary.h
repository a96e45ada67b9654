#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "foundation/ZoltaResult.h"

#include <memory>
#include <vector>

class CGalleryInitializeThread;
struct CGalleryManifest;

// The gallery library's process-wide state. Written by the initialisation thread until it has
// finished; readers wait for it (GalleryLibraryInitialize joins it).
extern bool g_enableContentCreatorTools;
extern bool g_browseChunking;
extern bool g_noCache;  // set: manifests open without their binary cache
extern std::shared_ptr<CGalleryManifest> g_myContent;
extern std::shared_ptr<CGalleryManifest> g_sharedGallery;
extern std::shared_ptr<CGalleryManifest> g_defaultManifest;
extern CAtlString g_language;
extern std::vector<std::shared_ptr<CGalleryManifest>>* g_galleryList;  // in the order of opening
extern std::vector<CAtlString>* g_searchHistory;
extern CGalleryInitializeThread* g_initializeThread;  // null when idle

// Start-up of the library: runs the initialisation thread and joins it, pumping events of the
// caller meanwhile. S_OK, E_ABORT when cancelled, or the code of a failed run.
[[nodiscard]] HRESULT GalleryLibraryInitialize();
// Cancels and joins a running initialisation and frees all process-wide state.
void GalleryLibraryShutdown();
