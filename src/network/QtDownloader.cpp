#include "network/QtDownloader.h"

#include "foundation/QtEventLoopWorkaround.h"

#include <QFile>
#include <QStorageInfo>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <memory>

namespace {

constexpr int kHttpPort = 80;
constexpr int kProxyAuthenticationRequired = 407;

int ClampToInt(qint64 value)
{
    return static_cast<int>(std::clamp<qint64>(value, 0, INT_MAX));
}

QByteArray HostHeader(const QString& host, int port)
{
    QByteArray header = QUrl::toAce(host);
    if (header.isEmpty())
        header = host.toUtf8();
    if (host.contains(QLatin1Char(':')))  // an IPv6 address
        header = '[' + header + ']';
    if (port != kHttpPort)
        header += ':' + QByteArray::number(port);
    return header;
}

QByteArray BasicCredentials(const CAtlString& user, const CAtlString& password)
{
    const QByteArray pair = user.ToQString().toUtf8() + ':' + password.ToQString().toUtf8();
    return "Basic " + pair.toBase64();
}

QNetworkProxy WithCredentials(QNetworkProxy proxy, const CAtlString& user, const CAtlString& password)
{
    if (!user.IsEmpty()) {
        proxy.setUser(user.ToQString());
        proxy.setPassword(password.ToQString());
    }
    return proxy;
}

}  // namespace

QtDownloader::QtDownloader(QObject* parent)
    : QObject(parent)
{}

QtDownloader::~QtDownloader() = default;

bool QtDownloader::MakeTarget(const QUrl& url, int port, const CAtlString& user, const CAtlString& password,
                              HttpGetRequest::Target& target) const
{
    // Only the path goes out: a query string is left behind on purpose.
    QByteArray path = url.path(QUrl::FullyEncoded).toUtf8();
    if (path.isEmpty())
        path = "/";
    target.hostHeader = HostHeader(url.host(), port);
    target.requestTarget = path;
    target.connectHost = url.host();
    target.connectPort = static_cast<quint16>(port);

    switch (m_connection->type) {
    case ConnectionInfoBase::eProxyNone:
        target.socketProxy = QNetworkProxy(QNetworkProxy::NoProxy);
        return true;
    case ConnectionInfoBase::eProxySocks5:
        target.socketProxy = WithCredentials(QNetworkProxy(QNetworkProxy::Socks5Proxy, m_connection->host.ToQString(),
                                                           static_cast<quint16>(m_connection->port)),
                                             user, password);
        return true;
    case ConnectionInfoBase::eProxyHttp:
        // The proxy is asked for the whole URL, and is handed the credentials with the request.
        target.socketProxy = QNetworkProxy(QNetworkProxy::NoProxy);
        target.connectHost = m_connection->host.ToQString();
        target.connectPort = static_cast<quint16>(m_connection->port);
        target.requestTarget = "http://" + target.hostHeader + path;
        if (!user.IsEmpty())
            target.proxyAuthorization = BasicCredentials(user, password);
        return true;
    case ConnectionInfoBase::eProxyDefault:
        // The process-wide proxy; credentials given here replace its own.
        target.socketProxy = user.IsEmpty() ? QNetworkProxy(QNetworkProxy::DefaultProxy)
                                            : WithCredentials(QNetworkProxy::applicationProxy(), user, password);
        return true;
    default:
        return false;
    }
}

HRESULT QtDownloader::Fail(QFile& file, HRESULT result, const QString& reason)
{
    m_failureReason = reason;
    // What a cut transfer left is no content of ours; an empty file stays, as a sign of the try.
    const bool partial = file.size() > 0;
    file.close();
    if (partial)
        file.remove();
    return result;
}

QString QtDownloader::CheckSpace(const QString& localFile, qint64 bodyBytes, qint64 contentLength) const
{
    const qint64 available = QStorageInfo(localFile).bytesAvailable();
    if (available < 0)
        return QString();
    if (contentLength >= 0) {
        // Announced: refused at once when it cannot fit, and bounded by the length afterwards.
        if (bodyBytes == 0 && contentLength > available)
            return QStringLiteral("Not enough free disk space for %1 bytes").arg(contentLength);
        return QString();
    }
    if (available < m_limits.freeSpaceMargin)
        return QStringLiteral("Free disk space fell below %1 MB after %2 bytes")
            .arg(m_limits.freeSpaceMargin / (1024 * 1024))
            .arg(bodyBytes);
    return QString();
}

HRESULT QtDownloader::Download(const CAtlString& url, const CZoltaFilePath& localFile, ConnectionInfoBase* connection)
{
    m_failureReason.clear();
    if (!connection)
        return E_POINTER;
    m_connection = connection;

    const QUrl parsed(url.ToQString());
    if (parsed.scheme() != QLatin1String("http")) {
        m_failureReason = QStringLiteral("Only http addresses are fetched");
        return E_FAIL;
    }
    const int port = parsed.port(kHttpPort);

    CAtlString user = m_connection->user;
    CAtlString password = m_connection->password;
    QFile file(localFile.ToQString());

    for (;;) {
        if (Aborted()) {
            m_failureReason = QStringLiteral("Cancelled");
            return E_ABORT;
        }
        if (file.exists())
            file.remove();
        m_finished = false;
        m_status = 0;
        m_tooSlow = false;
        m_requestError.clear();

        HttpGetRequest::Target target;
        if (!MakeTarget(parsed, port, user, password, target)) {
            m_failureReason = QStringLiteral("Unknown proxy type");
            return E_NOTIMPL;
        }
        if (parsed.host().isEmpty() || !file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            m_failureReason = parsed.host().isEmpty() ? QStringLiteral("The address has no host")
                                                      : QStringLiteral("Cannot write ") + file.fileName();
            return E_FAIL;
        }

        qint64 bodyBytes = 0;
        {
            // The request goes at the end of each round: its connection is of no further use.
            std::unique_ptr<HttpGetRequest> http = std::make_unique<HttpGetRequest>(&file);
            m_http = http.get();
            const QString path = file.fileName();
            m_http->SetBodyCheck([this, path](qint64 done, qint64 length) { return CheckSpace(path, done, length); });
            connect(m_http, &HttpGetRequest::responseHeaderReceived, this, &QtDownloader::OnResponseHeaderReceived);
            connect(m_http, &HttpGetRequest::dataReadProgress, this, &QtDownloader::OnDataReadProgress);
            connect(m_http, &HttpGetRequest::requestFinished, this, &QtDownloader::OnRequestFinished);
            m_clock.start();
            m_received.assign(1, {0, 0});
            m_requestId = m_http->Start(target);
            m_timeLeft = m_limits.idleMs;
            Wait();
            bodyBytes = m_received.back().second;
            m_http = nullptr;
        }

        if (m_aborted) {
            // Nothing of a stopped transfer stays.
            file.close();
            file.remove();
            m_failureReason = QStringLiteral("Cancelled");
            return E_ABORT;
        }
        if (m_status == kProxyAuthenticationRequired) {
            file.close();
            if (m_connection->Authenticate(m_connection->host, m_connection->port, user, password))
                continue;
            file.remove();  // the proxy's refusal page is no content of ours
            m_failureReason = QStringLiteral("The proxy refused the credentials");
            return E_ABORT;
        }
        // What worked is where the next file starts.
        m_connection->user = user;
        m_connection->password = password;

        if (m_status > 200) {
            file.close();
            file.remove();
            m_failureReason = QStringLiteral("HTTP status %1").arg(m_status);
            return E_FAIL;
        }
        if (m_tooSlow)
            return Fail(file, E_FAIL,
                        QStringLiteral("Fewer than %1 bytes in %2 seconds after %3 bytes")
                            .arg(m_limits.windowBytes)
                            .arg(m_limits.windowMs / 1000.0)
                            .arg(bodyBytes));
        if (!m_finished)
            return Fail(
                file, E_FAIL,
                QStringLiteral("No data for %1 seconds after %2 bytes").arg(m_limits.idleMs / 1000.0).arg(bodyBytes));
        if (!m_requestError.isEmpty())
            return Fail(file, E_FAIL, m_requestError);
        if (!file.flush())
            return Fail(file, E_FAIL, QStringLiteral("Cannot write ") + file.fileName());
        const qint64 size = file.size();
        file.close();
        if (size == 0) {
            m_failureReason = QStringLiteral("The reply was empty");
            return E_FAIL;
        }
        return S_OK;
    }
}

void QtDownloader::Wait()
{
    QtEventLoopWorkaround pump;
    // Wakes the wait often enough that a stop from outside takes effect at once.
    QTimer abortPoll;
    if (m_abortCheck) {
        connect(&abortPoll, &QTimer::timeout, this, &QtDownloader::DummySlot);
        abortPoll.start(kAbortPollMs);
    }
    pump.PumpWhileIdleAllows([this] { return m_finished || TooSlow() || Aborted(); }, m_timeLeft);
}

bool QtDownloader::Aborted()
{
    m_aborted = m_abortCheck && m_abortCheck();
    return m_aborted;
}

bool QtDownloader::TooSlow()
{
    const qint64 now = m_clock.elapsed();
    const qint64 windowStart = now - m_limits.windowMs;
    if (windowStart < 0)
        return false;
    // The front sample is the last one at or before the window's start: what had come by then.
    while (m_received.size() >= 2 && m_received[1].first <= windowStart)
        m_received.pop_front();
    m_tooSlow = m_received.back().second - m_received.front().second < m_limits.windowBytes;
    return m_tooSlow;
}

void QtDownloader::OnRequestFinished(int id, bool error)
{
    if (error && m_http) {
        m_requestError = m_http->ErrorString();
        if (m_requestError.isEmpty())
            m_requestError = QStringLiteral("The request failed");
        const QByteArray line = m_http->ErrorString().toLocal8Bit() + '\n';
        if (m_consoleLines) {
            m_consoleLines->append(line);
        } else {
            std::fputs(line.constData(), stdout);
            std::fflush(stdout);
        }
    }
    if (id == m_requestId)
        m_finished = true;
}

void QtDownloader::OnResponseHeaderReceived(int status)
{
    m_timeLeft = m_limits.idleMs;
    m_status = status;
}

void QtDownloader::OnDataReadProgress(qint64 done, qint64 total)
{
    m_timeLeft = m_limits.idleMs;
    // Samples a quarter of a second apart at most are kept: enough for the window, few in number.
    const qint64 now = m_clock.elapsed();
    if (m_received.size() >= 2 && now - m_received[m_received.size() - 2].first < 250)
        m_received.back() = {now, done};
    else
        m_received.emplace_back(now, done);
    m_connection->ReadProgress(ClampToInt(done), ClampToInt(total));
}

void QtDownloader::DummySlot()
{}
