#include "QtDownloader.h"

#include "QtEventLoopWorkaround.h"

#include <QFile>
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

QtDownloader::QtDownloader(QObject* parent) : QObject(parent) {}

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
        target.socketProxy =
            WithCredentials(QNetworkProxy(QNetworkProxy::Socks5Proxy, m_connection->host.ToQString(),
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

HRESULT QtDownloader::Download(const CAtlString& url, const CZoltaFilePath& localFile, ConnectionInfoBase* connection)
{
    if (!connection)
        return E_POINTER;
    m_connection = connection;

    const QUrl parsed(url.ToQString());
    if (parsed.scheme() != QLatin1String("http"))
        return E_FAIL;
    const int port = parsed.port(kHttpPort);

    CAtlString user = m_connection->user;
    CAtlString password = m_connection->password;
    QFile file(localFile.ToQString());

    for (;;) {
        if (file.exists())
            file.remove();
        m_finished = false;

        HttpGetRequest::Target target;
        if (!MakeTarget(parsed, port, user, password, target))
            return E_NOTIMPL;
        if (parsed.host().isEmpty() || !file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return E_FAIL;

        {
            // The request goes at the end of each round: its connection is of no further use.
            std::unique_ptr<HttpGetRequest> http = std::make_unique<HttpGetRequest>(&file);
            m_http = http.get();
            connect(m_http, &HttpGetRequest::responseHeaderReceived, this, &QtDownloader::OnResponseHeaderReceived);
            connect(m_http, &HttpGetRequest::dataReadProgress, this, &QtDownloader::OnDataReadProgress);
            connect(m_http, &HttpGetRequest::requestFinished, this, &QtDownloader::OnRequestFinished);
            m_requestId = m_http->Start(target);
            m_timeLeft = m_timeOut;
            Wait();
            m_http = nullptr;
        }

        if (m_status == kProxyAuthenticationRequired) {
            file.close();
            if (m_connection->Authenticate(m_connection->host, m_connection->port, user, password))
                continue;
            file.remove();  // the proxy's refusal page is no content of ours
            return E_ABORT;
        }
        // What worked is where the next file starts.
        m_connection->user = user;
        m_connection->password = password;

        if (m_status > 200) {
            file.close();
            file.remove();
            return E_FAIL;
        }
        file.flush();
        const qint64 size = file.size();
        file.close();
        return size == 0 ? E_FAIL : S_OK;
    }
}

void QtDownloader::Wait()
{
    QtEventLoopWorkaround pump;
    pump.PumpWhileIdleAllows([this] { return m_finished; }, m_timeLeft);
}

void QtDownloader::OnRequestFinished(int id, bool error)
{
    if (error && m_http) {
        const QByteArray line = m_http->ErrorString().toLocal8Bit() + '\n';
        std::fputs(line.constData(), stdout);
        std::fflush(stdout);
    }
    if (id == m_requestId)
        m_finished = true;
}

void QtDownloader::OnResponseHeaderReceived(int status)
{
    m_timeLeft = m_timeOut;
    m_status = status;
}

void QtDownloader::OnDataReadProgress(qint64 done, qint64 total)
{
    m_timeLeft = m_timeOut;
    m_connection->ReadProgress(ClampToInt(done), ClampToInt(total));
}

void QtDownloader::DummySlot() {}
