// The response reader, fed the same replies in pieces of every size.

#include "network/HttpResponseParser.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Outcome {
    bool fed = true;
    bool finished = true;
    int status = 0;
    std::string body;
};

// Feeds `reply` in pieces of `piece` bytes; `closed` tells whether the connection ends afterwards.
Outcome Parse(const std::string& reply, std::size_t piece, bool closed = true)
{
    Outcome outcome;
    HttpResponseParser parser([&](const char* data, qint64 size) {
        outcome.body.append(data, static_cast<std::size_t>(size));
        return true;
    });
    for (std::size_t at = 0; at < reply.size() && outcome.fed; at += piece)
        outcome.fed = parser.Feed(reply.data() + at, static_cast<qint64>(std::min(piece, reply.size() - at)));
    outcome.finished = outcome.fed && (parser.Complete() || (closed && parser.FinishAtEndOfStream()));
    outcome.status = parser.Status();
    return outcome;
}

void ExpectInEveryPieceSize(const std::string& reply, int status, const std::string& body, bool closed = true)
{
    for (std::size_t piece = 1; piece <= reply.size(); ++piece) {
        const Outcome outcome = Parse(reply, piece, closed);
        ASSERT_TRUE(outcome.finished) << "piece " << piece;
        EXPECT_EQ(status, outcome.status) << "piece " << piece;
        EXPECT_EQ(body, outcome.body) << "piece " << piece;
    }
}

}  // namespace

TEST(HttpResponseParser, FramesBodiesByLengthByChunksAndByClose)
{
    ExpectInEveryPieceSize("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhello and more", 200, "hello", false);
    ExpectInEveryPieceSize("HTTP/1.1 200 OK\r\ntransfer-encoding: Chunked\r\n\r\n"
                           "5\r\nhello\r\nA;x=y\r\n0123456789\r\n0\r\nTrailer: 1\r\n\r\n",
                           200, "hello0123456789", false);
    ExpectInEveryPieceSize("HTTP/1.0 404 Not Found\nServer: x\n\nuntil the end", 404, "until the end", true);
    ExpectInEveryPieceSize(
        "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 302 Found\r\nLocation: /\r\nContent-Length: 0\r\n\r\n", 302, "", false);
    ExpectInEveryPieceSize("HTTP/1.1 204 No Content\r\n\r\n", 204, "", false);
}

TEST(HttpResponseParser, RefusesWhatIsNotHttpAtOnce)
{
    for (const std::string reply :
         {"SSH-2.0-OpenSSH\r\n\r\n", "HTTP/1.1 2000 OK\r\n\r\n", "HTTP/1.1 abc\r\n\r\n",
          "HTTP/1.1 200 OK\r\nno colon here\r\n\r\n", "HTTP/1.1 200 OK\r\nContent-Length: -4\r\n\r\n",
          "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n"})
    {
        const Outcome outcome = Parse(reply, reply.size());
        EXPECT_FALSE(outcome.finished) << reply;
        EXPECT_EQ("", outcome.body) << reply;
    }
    // Garbage is seen in its first bytes, long before any empty line.
    HttpResponseParser parser(nullptr);
    EXPECT_FALSE(parser.Feed("<html>", 6));
    EXPECT_EQ(QStringLiteral("Invalid HTTP response header"), parser.ErrorString());
}

TEST(HttpResponseParser, AHeaderWithoutEndIsRefusedOnceTooLong)
{
    HttpResponseParser parser(nullptr);
    const std::string start = "HTTP/1.1 200 OK\r\n";
    ASSERT_TRUE(parser.Feed(start.data(), static_cast<qint64>(start.size())));
    const std::string line = "X-Filler: " + std::string(1000, 'f') + "\r\n";
    bool fed = true;
    for (int count = 0; count < 100 && fed; ++count)
        fed = parser.Feed(line.data(), static_cast<qint64>(line.size()));
    EXPECT_FALSE(fed);
    EXPECT_TRUE(parser.Failed());
}

TEST(HttpResponseParser, AReplyCutShortIsReportedWithWhatArrived)
{
    const Outcome byLength = Parse("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc", 4);
    EXPECT_FALSE(byLength.finished);
    EXPECT_EQ("abc", byLength.body);
    const Outcome chunked = Parse("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nhel", 3);
    EXPECT_FALSE(chunked.finished);
    EXPECT_EQ("hel", chunked.body);
    EXPECT_FALSE(Parse("HTTP/1.1 200 OK\r\n", 5).finished);

    HttpResponseParser parser(nullptr);
    EXPECT_FALSE(parser.FinishAtEndOfStream());
    EXPECT_EQ(QStringLiteral("Connection closed"), parser.ErrorString());
}

TEST(HttpResponseParser, AFailingSinkStopsTheBody)
{
    HttpResponseParser parser([](const char*, qint64) { return false; });
    const std::string reply = "HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nabc";
    EXPECT_FALSE(parser.Feed(reply.data(), static_cast<qint64>(reply.size())));
    EXPECT_EQ(200, parser.Status());
}
