#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

// Reads one HTTP/1.x response as it arrives in pieces: the status line and headers, then the body
// by Content-Length, by chunks, or up to the end of the connection. Body bytes go to the sink as
// they come, so nothing but the header is ever held.
class HttpResponseParser {
public:
    using BodySink = std::function<bool(const char* data, qint64 size)>;

    static constexpr qsizetype kMaxHeaderBytes = 64 * 1024;

    explicit HttpResponseParser(BodySink sink);

    // Takes the next bytes of the connection. False once the response is found broken.
    bool Feed(const char* data, qint64 size);
    // The connection ended. False when the response was cut short.
    bool FinishAtEndOfStream();

    bool HeaderComplete() const { return m_status != 0; }
    bool Complete() const { return m_state == eDone; }
    bool Failed() const { return m_state == eFailed; }
    int Status() const { return m_status; }
    // Content-Length, or -1 when the response did not give one.
    qint64 ContentLength() const { return m_contentLength; }
    qint64 BodyBytes() const { return m_bodyBytes; }
    const QString& ErrorString() const { return m_error; }

private:
    enum eState {
        eHeader,
        eBodyByLength,
        eBodyUntilClose,
        eChunkSize,
        eChunkData,
        eChunkDataEnd,
        eTrailer,
        eDone,
        eFailed,
    };

    bool Fail(const QString& error);
    qint64 FailInPiece(const QString& error);  // Fail, as a count of bytes used
    qint64 FeedHeader(const char* data, qint64 size);
    bool ParseHeader(const QByteArray& header);
    void StartBody(bool chunked);
    qint64 FeedBodyByLength(const char* data, qint64 size);
    qint64 FeedChunked(const char* data, qint64 size);
    // Collects one CRLF-terminated line; gives the bytes used, and sets `complete` when the line is whole.
    qint64 TakeLine(const char* data, qint64 size, bool& complete);
    bool DeliverBody(const char* data, qint64 size);

    BodySink m_sink;
    eState m_state = eHeader;
    QByteArray m_pending;  // header or chunk line not yet complete
    int m_status = 0;
    qint64 m_contentLength = -1;
    qint64 m_remaining = 0;  // of the body or of the current chunk
    qint64 m_bodyBytes = 0;
    QString m_error;
};
