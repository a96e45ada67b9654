#include "network/FetchUrl.h"

#include "network/ConnectionInfo.h"
#include "network/QtDownloader.h"

#include <QUrl>

#include <cstdio>

namespace {

// The observer's callbacks, with the byte count sent on to a separate progress observer when
// there is one.
class FetchConnection : public ConnectionInfo<IProxyObserver> {
public:
    explicit FetchConnection(IByteProgressObserver* progress)
        : m_progress(progress)
    {}

    void ReadProgress(int done, int total) override
    {
        if (m_progress)
            m_progress->ReadProgress(static_cast<unsigned int>(done), static_cast<unsigned int>(total));
        else
            ConnectionInfo<IProxyObserver>::ReadProgress(done, total);
    }

private:
    IByteProgressObserver* m_progress;
};

}  // namespace

HRESULT FetchUrl(const CAtlString& url, const CZoltaFilePath& localFile, IProxyObserver* proxyObserver,
                 IByteProgressObserver* progress, CAtlString* reason, const FetchControl* control)
{
    FetchConnection connection(progress);
    if (proxyObserver) {
        proxyObserver->GetProxy(connection.host, connection.port, connection.user, connection.password);
        if (!connection.host.IsEmpty())
            connection.type = ConnectionInfoBase::eProxyHttp;
        connection.Bind(proxyObserver, &IProxyObserver::Authenticate, &IProxyObserver::Cancelled,
                        &IProxyObserver::ReadProgress);
    }
    QtDownloader downloader;
    if (control) {
        downloader.SetAbortCheck(control->aborted);
        downloader.SetConsoleLines(control->consoleLines);
    }
    const HRESULT hr = downloader.Download(url, localFile, &connection);
    if (reason)
        *reason = CAtlString(downloader.GetFailureReason());
    return hr;
}

void PrintConsoleLines(const QByteArray& lines)
{
    if (lines.isEmpty())
        return;
    std::fputs(lines.constData(), stdout);
    std::fflush(stdout);
}

CZoltaFilePath FetchToTempFile(const CAtlString& url, IProxyObserver* proxyObserver)
{
    const QString path = QUrl(url.ToQString()).path();
    const CAtlString extension = CZoltaFilePath(path.section(QLatin1Char('/'), -1)).GetExtension();
    const CZoltaFilePath localFile = MakeTempFile(extension, CAtlString(L"SCVTemp"));
    if (FAILED(FetchUrl(url, localFile, proxyObserver))) {
        localFile.Remove();
        return CZoltaFilePath();
    }
    return localFile;
}
