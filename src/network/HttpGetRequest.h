#pragma once

#include "network/HttpResponseParser.h"

#include <QByteArray>
#include <QNetworkProxy>
#include <QObject>
#include <QString>

#include <functional>
#include <vector>

class QIODevice;
class QTcpSocket;

// One plain HTTP GET over its own connection, the body written to a device as it arrives.
// Runs on the events of the thread that owns it; tells of its progress by signals.
class HttpGetRequest : public QObject {
    Q_OBJECT
public:
    // Where to connect and what to ask for.
    struct Target {
        QString connectHost;
        quint16 connectPort = 80;
        QNetworkProxy socketProxy{QNetworkProxy::NoProxy};
        QByteArray requestTarget;       // "/path" or, to an HTTP proxy, "http://host/path"
        QByteArray hostHeader;          // "host" or "host:port"
        QByteArray proxyAuthorization;  // the whole header value, or empty
    };

    // Bytes taken off the socket in one go; also the most the socket buffers ahead of us.
    static constexpr qint64 kReadChunk = 256 * 1024;

    explicit HttpGetRequest(QIODevice* output, QObject* parent = nullptr);
    ~HttpGetRequest() override;

    // Asked before the first byte of body is written (with 0) and then after every
    // kBodyCheckInterval bytes of body: empty lets the body go on, any other text ends the request
    // with that error. The second argument is the Content-Length, or -1.
    using BodyCheck = std::function<QString(qint64 bodyBytes, qint64 contentLength)>;
    static constexpr qint64 kBodyCheckInterval = 1024 * 1024;
    void SetBodyCheck(BodyCheck check) { m_bodyCheck = std::move(check); }

    // Starts the request; gives its id, which the finished signal carries.
    int Start(const Target& target);
    QString ErrorString() const { return m_error; }

signals:
    void responseHeaderReceived(int status);
    void dataReadProgress(qint64 done, qint64 total);
    void requestFinished(int id, bool error);

private slots:
    void OnConnected();
    void OnReadyRead();
    void OnDisconnected();
    void OnSocketError();

private:
    void ReadAvailable();
    void Finish(bool error, const QString& message = QString());
    bool WriteBody(const char* data, qint64 size);

    QIODevice* m_output;
    QTcpSocket* m_socket = nullptr;
    HttpResponseParser m_parser;
    QByteArray m_request;
    std::vector<char> m_buffer;
    int m_id = 0;
    bool m_headerSignalled = false;
    bool m_finished = false;
    QString m_error;
    BodyCheck m_bodyCheck;
    QString m_bodyRefusal;
    qint64 m_checkedAt = 0;
    bool m_bodyStarted = false;
};
