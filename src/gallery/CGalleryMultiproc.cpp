#include "gallery/CGalleryMultiproc.h"

#include "gallery/GalleryInitializeThread.h"

CGalleryMultiproc::CGalleryMultiproc(std::vector<CAtlString> manifestPaths)
    : m_paths(std::move(manifestPaths))
{}

CGalleryMultiproc::~CGalleryMultiproc()
{
    Cancel();
    Wait();
}

HRESULT CGalleryMultiproc::OnManifestProgress(float)
{
    return IsCancelled() ? E_ABORT : S_OK;
}

HRESULT CGalleryMultiproc::Run()
{
    m_opened.clear();
    for (const CAtlString& path : m_paths) {
        if (IsCancelled())
            return E_ABORT;
        if (std::shared_ptr<CGalleryManifest> manifest = OpenGalleryManifest(path, *this, this))
            m_opened.push_back(std::move(manifest));
    }
    return IsCancelled() ? E_ABORT : S_OK;
}
