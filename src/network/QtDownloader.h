#pragma once

#include "ConnectionInfo.h"
#include "HttpGetRequest.h"

#include "CZoltaFilePath.h"
#include "ZoltaResult.h"

#include "CAtlString.h"

#include <QObject>

class QFile;
class QUrl;

// Fetches one http URL into one local file while the calling thread keeps pumping its events.
// Lives for one fetch, on the stack of the thread that fetches.
//
// Only the scheme "http" is served; the query string never goes out; any status above 200 is a
// failure (so no redirect is followed); an empty result is a failure; the fetch gives up after
// 20 seconds without any sign of life, however long the whole transfer takes. A 407 asks the
// connection for credentials and goes round again for as long as it hands out new ones.
class QtDownloader : public QObject
{
    Q_OBJECT
public:
    static constexpr int kTimeOutMs = 20000;

    explicit QtDownloader(QObject* parent = nullptr);
    ~QtDownloader() override;

    // 0 on success; 0x80004005 for a refused scheme, a failed request or an empty result;
    // 0x80004004 when the proxy's credentials were refused; 0x80004001 for an unknown proxy type.
    HRESULT Download(const CAtlString& url, const CZoltaFilePath& localFile, ConnectionInfoBase* connection);

    // The last HTTP status seen; 0 when no reply came.
    int GetStatus() const { return m_status; }

public slots:
    void OnRequestFinished(int id, bool error);
    void OnResponseHeaderReceived(int status);
    void OnDataReadProgress(qint64 done, qint64 total);
    // Only wakes the event loop.
    void DummySlot();

private:
    // False for an unknown proxy type.
    bool MakeTarget(const QUrl& url, int port, const CAtlString& user, const CAtlString& password,
                    HttpGetRequest::Target& target) const;
    void Wait();

    ConnectionInfoBase* m_connection = nullptr;
    HttpGetRequest* m_http = nullptr;
    int m_requestId = 0;
    bool m_finished = false;
    int m_status = 0;
    int m_timeOut = kTimeOutMs;
    int m_timeLeft = 0;
};
