#include "network/HttpGetRequest.h"

#include <QAtomicInt>
#include <QIODevice>
#include <QTcpSocket>

namespace {

QAtomicInt g_nextRequestId(1);

constexpr int kProxyAuthenticationRequired = 407;

}  // namespace

HttpGetRequest::HttpGetRequest(QIODevice* output, QObject* parent)
    : QObject(parent),
      m_output(output),
      m_parser([this](const char* data, qint64 size) { return WriteBody(data, size); }),
      m_buffer(static_cast<size_t>(kReadChunk))
{}

HttpGetRequest::~HttpGetRequest()
{
    // A request given up on (the idle limit) ends without a word: nobody listens any more.
    if (m_socket) {
        m_socket->disconnect(this);
        m_socket->abort();
    }
}

int HttpGetRequest::Start(const Target& target)
{
    m_id = g_nextRequestId.fetchAndAddRelaxed(1);
    m_request = "GET " + target.requestTarget + " HTTP/1.1\r\nHost: " + target.hostHeader + "\r\n";
    if (!target.proxyAuthorization.isEmpty())
        m_request += "Proxy-Authorization: " + target.proxyAuthorization + "\r\n";
    m_request += "Connection: close\r\n\r\n";

    m_socket = new QTcpSocket(this);
    // Bounded: a slow disk makes the socket wait instead of the memory grow.
    m_socket->setReadBufferSize(kReadChunk * 4);
    m_socket->setProxy(target.socketProxy);
    connect(m_socket, &QTcpSocket::connected, this, &HttpGetRequest::OnConnected);
    connect(m_socket, &QTcpSocket::readyRead, this, &HttpGetRequest::OnReadyRead);
    connect(m_socket, &QTcpSocket::disconnected, this, &HttpGetRequest::OnDisconnected);
    connect(m_socket, &QTcpSocket::errorOccurred, this, &HttpGetRequest::OnSocketError);
    m_socket->connectToHost(target.connectHost, target.connectPort);
    return m_id;
}

bool HttpGetRequest::WriteBody(const char* data, qint64 size)
{
    if (m_bodyCheck && !m_bodyStarted) {
        // Before the first byte: a body announced too large for the disk is refused whole.
        m_bodyStarted = true;
        m_bodyRefusal = m_bodyCheck(0, m_parser.ContentLength());
        if (!m_bodyRefusal.isEmpty())
            return false;
    }
    if (!m_output || m_output->write(data, size) != size)
        return false;
    const qint64 written = m_parser.BodyBytes();  // counts this piece already
    if (m_bodyCheck && written - m_checkedAt >= kBodyCheckInterval) {
        m_checkedAt = written;
        m_bodyRefusal = m_bodyCheck(written, m_parser.ContentLength());
        return m_bodyRefusal.isEmpty();
    }
    return true;
}

void HttpGetRequest::OnConnected()
{
    m_socket->write(m_request);
}

void HttpGetRequest::OnReadyRead()
{
    ReadAvailable();
}

void HttpGetRequest::ReadAvailable()
{
    const qint64 bodyBefore = m_parser.BodyBytes();
    while (!m_finished && m_socket->bytesAvailable() > 0) {
        const qint64 got = m_socket->read(m_buffer.data(), kReadChunk);
        if (got <= 0)
            break;
        const bool good = m_parser.Feed(m_buffer.data(), got);
        if (!m_headerSignalled && m_parser.HeaderComplete()) {
            m_headerSignalled = true;
            emit responseHeaderReceived(m_parser.Status());
        }
        if (!good) {
            Finish(true, m_bodyRefusal.isEmpty() ? m_parser.ErrorString() : m_bodyRefusal);
            return;
        }
        if (m_parser.Complete())
            break;
    }
    if (m_parser.BodyBytes() != bodyBefore)
        emit dataReadProgress(m_parser.BodyBytes(), m_parser.ContentLength() < 0 ? 0 : m_parser.ContentLength());
    if (m_parser.Complete())
        Finish(false);
}

void HttpGetRequest::OnDisconnected()
{
    if (m_finished)
        return;
    ReadAvailable();
    if (m_finished)
        return;
    if (m_parser.FinishAtEndOfStream())
        Finish(false);
    else
        Finish(true, m_parser.ErrorString());
}

void HttpGetRequest::OnSocketError()
{
    if (m_finished)
        return;
    switch (m_socket->error()) {
    case QAbstractSocket::RemoteHostClosedError:
        OnDisconnected();
        return;
    case QAbstractSocket::ProxyAuthenticationRequiredError:
        // A SOCKS or tunnelling proxy refused the credentials: to the caller this is a 407 like
        // any other, so that it can ask for new ones.
        emit responseHeaderReceived(kProxyAuthenticationRequired);
        break;
    default:
        break;
    }
    Finish(true, m_socket->errorString());
}

void HttpGetRequest::Finish(bool error, const QString& message)
{
    if (m_finished)
        return;
    m_finished = true;
    m_error = message;
    m_socket->abort();
    emit requestFinished(m_id, error);
}
