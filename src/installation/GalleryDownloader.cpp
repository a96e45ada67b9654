#include "GalleryDownloader.h"

#include "FetchUrl.h"

CZoltaFilePath GalleryDownloader::Download(const CAtlString& url)
{
    return FetchToTempFile(url, m_proxyObserver);
}
