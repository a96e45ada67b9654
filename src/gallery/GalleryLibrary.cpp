#include "gallery/GalleryLibrary.h"

#include "gallery/CGalleryManifest.h"
#include "gallery/GalleryInitializeThread.h"

bool g_enableContentCreatorTools = false;
bool g_browseChunking = false;
bool g_noCache = false;
std::shared_ptr<CGalleryManifest> g_myContent;
std::shared_ptr<CGalleryManifest> g_sharedGallery;
std::shared_ptr<CGalleryManifest> g_defaultManifest;
CAtlString g_language;
std::vector<std::shared_ptr<CGalleryManifest>>* g_galleryList = nullptr;
std::vector<CAtlString>* g_searchHistory = nullptr;
CGalleryInitializeThread* g_initializeThread = nullptr;

HRESULT GalleryLibraryInitialize()
{
    if (g_initializeThread)
        return E_FAIL;  // one initialisation at a time
    auto* thread = new CGalleryInitializeThread;
    g_initializeThread = thread;
    thread->Start(false);
    thread->Wait();
    const auto result = static_cast<HRESULT>(thread->Result());
    g_initializeThread = nullptr;
    delete thread;
    return result;
}

void GalleryLibraryShutdown()
{
    if (g_initializeThread) {
        g_initializeThread->Cancel();
        g_initializeThread->Wait();
    }
    delete g_galleryList;
    g_galleryList = nullptr;
    delete g_searchHistory;
    g_searchHistory = nullptr;
    g_myContent.reset();
    g_sharedGallery.reset();
    g_defaultManifest.reset();
    g_language.Empty();
    g_enableContentCreatorTools = false;
    g_browseChunking = false;
}
