#pragma once

#include "network/ConnectionInfo.h"
#include "network/HttpGetRequest.h"

#include "foundation/CZoltaFilePath.h"
#include "foundation/ZoltaResult.h"

#include "libZoltaAtl/CAtlString.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>

#include <deque>
#include <functional>
#include <utility>

class QFile;
class QUrl;

// Fetches one http URL into one local file while the calling thread keeps pumping its events.
// Lives for one fetch, on the stack of the thread that fetches.
//
// Only the scheme "http" is served; the query string never goes out; any status above 200 is a
// failure (so no redirect is followed); an empty result is a failure; the fetch gives up after
// 20 seconds without any sign of life, however long the whole transfer takes, and also when fewer
// than 1,024 bytes arrive in any 60 seconds (a trickle that is never quite idle). A body stops at
// its Content-Length; one without a length stops when the disk's free space falls below a margin.
// A transfer cut short fails, and what it left is removed. A 407 asks the connection for
// credentials and goes round again for as long as it hands out new ones. A fetch running beside
// others can be stopped from outside at once, and can keep its console lines for later.
class QtDownloader : public QObject {
    Q_OBJECT
public:
    static constexpr int kTimeOutMs = 20000;

    // The bounds a source must keep to. Tests shorten them; the product keeps these values.
    struct Limits {
        int idleMs = kTimeOutMs;
        int windowMs = 60000;
        qint64 windowBytes = 1024;
        qint64 freeSpaceMargin = 64 * 1024 * 1024;
    };

    explicit QtDownloader(QObject* parent = nullptr);
    ~QtDownloader() override;

    // 0 on success; 0x80004005 for a refused scheme, a failed request or an empty result;
    // 0x80004004 when the proxy's credentials were refused; 0x80004001 for an unknown proxy type.
    [[nodiscard]] HRESULT Download(const CAtlString& url, const CZoltaFilePath& localFile,
                                   ConnectionInfoBase* connection);

    // The last HTTP status seen; 0 when no reply came.
    int GetStatus() const { return m_status; }
    // Why the last Download failed, in plain English; empty after a success.
    const QString& GetFailureReason() const { return m_failureReason; }

    void SetLimits(const Limits& limits) { m_limits = limits; }

    // Asked every few milliseconds while the fetch waits: true stops it at once, its file removed,
    // with 0x80004004.
    static constexpr int kAbortPollMs = 20;
    void SetAbortCheck(std::function<bool()> aborted) { m_abortCheck = std::move(aborted); }
    // The lines the fetch would print on standard output go here instead, when given.
    void SetConsoleLines(QByteArray* lines) { m_consoleLines = lines; }

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
    // True once the transfer fell below the rate of the window rule.
    bool TooSlow();
    // Empty while the body may go on; else why it may not.
    QString CheckSpace(const QString& localFile, qint64 bodyBytes, qint64 contentLength) const;
    [[nodiscard]] HRESULT Fail(QFile& file, HRESULT result, const QString& reason);
    bool Aborted();

    ConnectionInfoBase* m_connection = nullptr;
    HttpGetRequest* m_http = nullptr;
    int m_requestId = 0;
    bool m_finished = false;
    int m_status = 0;
    int m_timeLeft = 0;
    Limits m_limits;
    QString m_failureReason;
    QString m_requestError;
    bool m_tooSlow = false;
    std::function<bool()> m_abortCheck;
    bool m_aborted = false;
    QByteArray* m_consoleLines = nullptr;
    QElapsedTimer m_clock;
    std::deque<std::pair<qint64, qint64>> m_received;  // (ms since the request, body bytes) samples
};
