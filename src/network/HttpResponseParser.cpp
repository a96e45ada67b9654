#include "network/HttpResponseParser.h"

#include <QList>

#include <algorithm>
#include <cstring>

namespace {

const QString kInvalidHeader = QStringLiteral("Invalid HTTP response header");
const QString kInvalidChunk = QStringLiteral("Invalid HTTP chunked body");
const QString kWrongLength = QStringLiteral("Wrong content length");

bool ParseStatusLine(const QByteArray& line, int& status)
{
    // "HTTP/1.1 200 OK": the reason phrase may be missing or empty.
    if (!line.startsWith("HTTP/"))
        return false;
    const QList<QByteArray> parts = line.split(' ');
    if (parts.size() < 2 || parts[1].size() != 3)
        return false;
    bool isNumber = false;
    status = parts[1].toInt(&isNumber);
    return isNumber && status >= 100;
}

bool ParseLength(const QByteArray& text, int base, qint64& value)
{
    const QByteArray trimmed = text.trimmed();
    if (trimmed.isEmpty() || trimmed.startsWith('-') || trimmed.startsWith('+'))
        return false;
    bool isNumber = false;
    value = trimmed.toLongLong(&isNumber, base);
    return isNumber;
}

}  // namespace

HttpResponseParser::HttpResponseParser(BodySink sink)
    : m_sink(std::move(sink))
{}

bool HttpResponseParser::Fail(const QString& error)
{
    m_state = eFailed;
    m_error = error;
    m_pending.clear();
    return false;
}

qint64 HttpResponseParser::FailInPiece(const QString& error)
{
    Fail(error);
    return -1;
}

bool HttpResponseParser::Feed(const char* data, qint64 size)
{
    while (size > 0) {
        qint64 used = 0;
        switch (m_state) {
        case eHeader:
            used = FeedHeader(data, size);
            break;
        case eBodyByLength:
            used = FeedBodyByLength(data, size);
            break;
        case eBodyUntilClose:
            used = DeliverBody(data, size) ? size : -1;
            break;
        case eChunkSize:
        case eChunkData:
        case eChunkDataEnd:
        case eTrailer:
            used = FeedChunked(data, size);
            break;
        case eDone:
            return true;  // anything after the announced end is not ours
        case eFailed:
            return false;
        }
        if (used < 0 || m_state == eFailed)
            return false;
        data += used;
        size -= used;
    }
    return m_state != eFailed;
}

bool HttpResponseParser::FinishAtEndOfStream()
{
    switch (m_state) {
    case eDone:
        return true;
    case eFailed:
        return false;
    case eBodyUntilClose:
        m_state = eDone;
        return true;
    case eHeader:
        return Fail(m_pending.isEmpty() ? QStringLiteral("Connection closed") : kInvalidHeader);
    case eBodyByLength:
        return Fail(kWrongLength);
    default:
        return Fail(kInvalidChunk);
    }
}

qint64 HttpResponseParser::TakeLine(const char* data, qint64 size, bool& complete)
{
    const char* end = static_cast<const char*>(std::memchr(data, '\n', static_cast<size_t>(size)));
    const qint64 used = end ? (end - data) + 1 : size;
    m_pending.append(data, used);
    complete = end != nullptr;
    return used;
}

qint64 HttpResponseParser::FeedHeader(const char* data, qint64 size)
{
    // The header ends at the first empty line; look for it across the pieces.
    const qsizetype before = m_pending.size();
    m_pending.append(data, std::min<qint64>(size, kMaxHeaderBytes + 4 - before));
    qsizetype end = m_pending.indexOf("\r\n\r\n", std::max<qsizetype>(0, before - 3));
    qsizetype separator = 4;
    const qsizetype bareEnd = m_pending.indexOf("\n\n", std::max<qsizetype>(0, before - 1));
    if (bareEnd >= 0 && (end < 0 || bareEnd < end)) {
        end = bareEnd;
        separator = 2;
    }
    if (end < 0) {
        if (m_pending.size() > kMaxHeaderBytes)
            return FailInPiece(kInvalidHeader);
        // Garbage shows at once: no need to wait for a whole header to refuse it.
        const qsizetype probe = std::min<qsizetype>(m_pending.size(), 5);
        if (!QByteArray("HTTP/").startsWith(m_pending.left(probe)))
            return FailInPiece(kInvalidHeader);
        return size;
    }
    const qint64 used = end + separator - before;
    const QByteArray header = m_pending.left(end);
    m_pending.clear();
    if (!ParseHeader(header))
        return -1;
    return used;
}

bool HttpResponseParser::ParseHeader(const QByteArray& header)
{
    QList<QByteArray> lines = header.split('\n');
    for (QByteArray& line : lines) {
        if (line.endsWith('\r'))
            line.chop(1);
    }
    int status = 0;
    if (lines.isEmpty() || !ParseStatusLine(lines.first(), status))
        return Fail(kInvalidHeader);

    bool chunked = false;
    qint64 length = -1;
    for (qsizetype index = 1; index < lines.size(); ++index) {
        const QByteArray& line = lines[index];
        const qsizetype colon = line.indexOf(':');
        if (colon <= 0)
            return Fail(kInvalidHeader);
        const QByteArray name = line.left(colon).trimmed().toLower();
        const QByteArray value = line.mid(colon + 1).trimmed();
        if (name == "content-length") {
            if (!ParseLength(value, 10, length))
                return Fail(kInvalidHeader);
        } else if (name == "transfer-encoding") {
            chunked = value.toLower().contains("chunked");
        }
    }

    if (status < 200) {
        // An interim reply such as "100 Continue": the real one follows.
        return true;
    }
    m_status = status;
    m_contentLength = chunked ? -1 : length;
    if (status == 204 || status == 304)
        m_state = eDone;
    else
        StartBody(chunked);
    return true;
}

void HttpResponseParser::StartBody(bool chunked)
{
    if (chunked) {
        m_state = eChunkSize;
    } else if (m_contentLength >= 0) {
        m_remaining = m_contentLength;
        m_state = m_remaining == 0 ? eDone : eBodyByLength;
    } else {
        m_state = eBodyUntilClose;
    }
}

bool HttpResponseParser::DeliverBody(const char* data, qint64 size)
{
    m_bodyBytes += size;
    if (m_sink && !m_sink(data, size))
        return Fail(QStringLiteral("Unable to write the received data"));
    return true;
}

qint64 HttpResponseParser::FeedBodyByLength(const char* data, qint64 size)
{
    const qint64 used = std::min(size, m_remaining);
    if (!DeliverBody(data, used))
        return -1;
    m_remaining -= used;
    if (m_remaining == 0)
        m_state = eDone;
    return used;
}

qint64 HttpResponseParser::FeedChunked(const char* data, qint64 size)
{
    if (m_state == eChunkData) {
        const qint64 used = std::min(size, m_remaining);
        if (!DeliverBody(data, used))
            return -1;
        m_remaining -= used;
        if (m_remaining == 0)
            m_state = eChunkDataEnd;
        return used;
    }

    bool complete = false;
    const qint64 used = TakeLine(data, size, complete);
    if (!complete) {
        if (m_pending.size() > kMaxHeaderBytes)
            return FailInPiece(kInvalidChunk);
        return used;
    }
    QByteArray line = m_pending;
    m_pending.clear();
    line = line.trimmed();

    if (m_state == eChunkDataEnd) {
        if (!line.isEmpty())
            return FailInPiece(kInvalidChunk);
        m_state = eChunkSize;
    } else if (m_state == eChunkSize) {
        const qsizetype extension = line.indexOf(';');
        if (extension >= 0)
            line.truncate(extension);
        qint64 chunkSize = 0;
        if (!ParseLength(line, 16, chunkSize))
            return FailInPiece(kInvalidChunk);
        m_remaining = chunkSize;
        m_state = chunkSize == 0 ? eTrailer : eChunkData;
    } else if (line.isEmpty()) {  // eTrailer: its empty line ends the response
        m_state = eDone;
    }
    return used;
}
