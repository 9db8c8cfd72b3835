// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/WebSocketWire.h"

#include "platform/linux/net/WebSocketHandshake.h"
#include "tests/platform/net/WebSocketBytes.h"
#include "tests/support/PrintQt.h"

#include <array>
#include <gtest/gtest.h>
#include <ostream>
#include <vector>

namespace zofra {

inline void PrintTo(WebSocketEvent::Kind kind, std::ostream* out) {
    constexpr std::array names{"text", "binary", "ping", "pong", "close", "part", "violation"};
    *out << names.at(static_cast<std::size_t>(kind));
}

} // namespace zofra

namespace zofra::test {
namespace {

using Kind = WebSocketEvent::Kind;
constexpr std::size_t cap = 1000;

std::vector<WebSocketEvent> readAll(WebSocketReader& reader, QByteArrayView bytes) {
    std::vector<WebSocketEvent> events;
    while (auto event = reader.next(bytes))
        events.push_back(*std::move(event));
    EXPECT_TRUE(bytes.isEmpty());
    return events;
}

std::vector<WebSocketEvent> eventsIn(const QByteArray& bytes) {
    WebSocketReader whole(cap);
    auto events = readAll(whole, bytes);
    // The same in single bytes.
    WebSocketReader dripping(cap);
    std::vector<WebSocketEvent> dripped;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        for (auto& event : readAll(dripping, QByteArrayView(bytes).sliced(i, 1)))
            dripped.push_back(std::move(event));
    }
    EXPECT_EQ(events.size(), dripped.size());
    for (std::size_t i = 0; i < std::min(events.size(), dripped.size()); ++i) {
        EXPECT_EQ(events[i].kind, dripped[i].kind);
        EXPECT_EQ(events[i].text, dripped[i].text);
        EXPECT_EQ(events[i].bytes, dripped[i].bytes);
        EXPECT_EQ(events[i].closeCode, dripped[i].closeCode);
    }
    return events;
}

QByteArray closeCode(int code) {
    return QByteArray(1, static_cast<char>(code >> 8)) + static_cast<char>(code);
}

std::uint16_t violationIn(const QByteArray& bytes) {
    const auto events = eventsIn(bytes);
    return !events.empty() && events.back().kind == Kind::violation ? events.back().closeCode
                                                                    : std::uint16_t{0};
}

TEST(WebSocketReaderTest, ReadsTextsOfEveryLengthForm) {
    for (const qsizetype length : {0, 1, 125, 126, 127, 999, 1000}) {
        const auto events = eventsIn(serverFrame(1, QByteArray(length, 'x')));
        ASSERT_EQ(events.size(), 1U) << length;
        EXPECT_EQ(events[0].kind, Kind::text);
        EXPECT_EQ(events[0].text.size(), length);
    }
    WebSocketReader large(1024 * 1024);
    const auto events = readAll(large, serverFrame(1, QByteArray(1024 * 1024, 'x')));
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].text.size(), 1024 * 1024);
}

TEST(WebSocketReaderTest, ReadsSeveralFrames) {
    const auto events = eventsIn(serverFrame(1, "o") + serverFrame(2, QByteArray("\0\xFF", 2)) +
                                 serverFrame(9, "p") + serverFrame(10, "q") + serverFrame(1, "h"));
    ASSERT_EQ(events.size(), 5U);
    EXPECT_EQ(events[0].text, u"o"_qs);
    EXPECT_EQ(events[1].kind, Kind::binary);
    EXPECT_EQ(events[1].bytes, QByteArray("\0\xFF", 2));
    EXPECT_EQ(events[2].kind, Kind::ping);
    EXPECT_EQ(events[2].bytes, "p");
    EXPECT_EQ(events[3].kind, Kind::pong);
    EXPECT_EQ(events[4].text, u"h"_qs);
}

TEST(WebSocketReaderTest, PutsPartsTogetherAroundControlFrames) {
    const auto events = eventsIn(serverFrame(1, "D\xC3", Part::notLast) + serverFrame(9, "p") +
                                 serverFrame(0, "\xA9j", Part::notLast) + serverFrame(0, "\xC3\xA0"));
    ASSERT_EQ(events.size(), 4U);
    EXPECT_EQ(events[0].kind, Kind::part);
    EXPECT_EQ(events[1].kind, Kind::ping);
    EXPECT_EQ(events[2].kind, Kind::part);
    EXPECT_EQ(events[3].kind, Kind::text);
    EXPECT_EQ(events[3].text, u"Déjà"_qs);
}

TEST(WebSocketReaderTest, KeepsAByteOrderMark) {
    const auto events = eventsIn(serverFrame(1, "\xEF\xBB\xBFo"));
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].text, u"\uFEFFo"_qs);
}

TEST(WebSocketReaderTest, ReadsAClose) {
    auto events = eventsIn(serverFrame(8, "\x0B\xB8Go away!"));
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].kind, Kind::close);
    EXPECT_EQ(events[0].closeCode, 3000);
    EXPECT_EQ(events[0].text, u"Go away!"_qs);
    events = eventsIn(serverFrame(8, {}));
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].closeCode, 1005);
}

TEST(WebSocketReaderTest, SwallowsWhatFollowsAClose) {
    EXPECT_EQ(eventsIn(serverFrame(8, {}) + serverFrame(1, "late")).size(), 1U);
    EXPECT_EQ(eventsIn(serverFrame(3, {}) + serverFrame(1, "late")).size(), 1U);
}

TEST(WebSocketReaderTest, RefusesWhatTheProtocolForbids) {
    EXPECT_EQ(violationIn(QByteArray("\xC1\x00", 2)), 1002) << "first reserved bit";
    EXPECT_EQ(violationIn(QByteArray("\x91\x00", 2)), 1002) << "last reserved bit";
    EXPECT_EQ(violationIn(QByteArray("\x81\x81\0\0\0\0o", 7)), 1002) << "masked";
    for (const int opcode : {3, 4, 5, 6, 7, 11, 12, 13, 14, 15})
        EXPECT_EQ(violationIn(serverFrame(static_cast<std::uint8_t>(opcode), {})), 1002) << opcode;
    EXPECT_EQ(violationIn(serverFrame(9, QByteArray(126, 'x'))), 1002) << "long ping";
    EXPECT_EQ(violationIn(serverFrame(9, "x", Part::notLast)), 1002) << "ping in parts";
    EXPECT_EQ(violationIn(serverFrame(8, {}, Part::notLast)), 1002) << "close in parts";
    EXPECT_EQ(violationIn(serverFrame(0, "x")), 1002) << "a continuation of nothing";
    EXPECT_EQ(violationIn(serverFrame(1, "x", Part::notLast) + serverFrame(1, "y")), 1002)
        << "two beginnings";
    EXPECT_EQ(violationIn(serverFrame(8, "x")), 1002) << "half a code";
    for (const int code : {999, 1004, 1005, 1006, 1015, 1016, 2999, 5000, 65535})
        EXPECT_EQ(violationIn(serverFrame(8, closeCode(code))), 1002) << "reserved code " << code;
    for (const int code : {1000, 1003, 1007, 1014, 3000, 4999})
        EXPECT_EQ(violationIn(serverFrame(8, closeCode(code))), 0) << code;
    EXPECT_EQ(violationIn(serverFrame(8, "\x03\xE8\xFF")), 1007) << "reason is no UTF-8";
    EXPECT_EQ(violationIn(QByteArray("\x81\x7E\0\x7D", 4)), 1002) << "125 in the longer form";
    EXPECT_EQ(violationIn(QByteArray("\x81\x7F\0\0\0\0\0\0\xFF\xFF", 10)), 1002)
        << "65535 in the longest form";
}

TEST(WebSocketReaderTest, RefusesTextThatIsNoUtf8) {
    EXPECT_EQ(violationIn(serverFrame(1, "\xFF")), 1007);
    EXPECT_EQ(violationIn(serverFrame(1, "a\xC3")), 1007);
    EXPECT_EQ(violationIn(serverFrame(1, "\xED\xA0\x80")), 1007);
}

TEST(WebSocketReaderTest, RefusesMessagesBeyondTheCap) {
    EXPECT_EQ(violationIn(serverFrame(1, QByteArray(1001, 'x'))), 1009);
    EXPECT_EQ(violationIn(serverFrame(1, QByteArray(600, 'x'), Part::notLast) +
                          serverFrame(0, QByteArray(401, 'x'))),
              1009);
    EXPECT_EQ(
        eventsIn(serverFrame(1, QByteArray(600, 'x'), Part::notLast) + serverFrame(0, QByteArray(400, 'x')))
            .back()
            .kind,
        Kind::text);
}

TEST(WebSocketReaderTest, RefusesADeclaredLengthBeforeAnyOfIt) {
    EXPECT_EQ(violationIn(QByteArray("\x81\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 10)), 1002) << "top bit";
    EXPECT_EQ(violationIn(QByteArray("\x81\x7F\x80\0\0\0\0\0\0\0", 10)), 1002) << "top bit alone";
    EXPECT_EQ(violationIn(QByteArray("\x81\x7F\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 10)), 1009);
    EXPECT_EQ(violationIn(QByteArray("\x81\x7F\0\0\0\x01\0\0\0\0", 10)), 1009);
}

TEST(WebSocketFrameTest, IsFinalAndMasked) {
    // The masked "Hello" of RFC 6455, section 5.7.
    EXPECT_EQ(webSocketFrame(WebSocketOpcode::text, "Hello", 0x37fa213d),
              QByteArray("\x81\x85\x37\xfa\x21\x3d\x7f\x9f\x4d\x51\x58", 11));
    EXPECT_EQ(webSocketFrame(WebSocketOpcode::pong, {}, 0), QByteArray("\x8a\x80\0\0\0\0", 6));
    EXPECT_EQ(webSocketFrame(WebSocketOpcode::binary, QByteArray(126, 'x'), 0).first(4),
              QByteArray("\x82\xfe\0\x7e", 4));
    EXPECT_EQ(webSocketFrame(WebSocketOpcode::binary, QByteArray(65536, 'x'), 0).first(10),
              QByteArray("\x82\xff\0\0\0\0\0\x01\0\0", 10));
}

TEST(WebSocketClosePayloadTest, HoldsTheCodeAndAsMuchReasonAsFits) {
    EXPECT_EQ(webSocketClosePayload(1000, {}), "\x03\xE8");
    EXPECT_EQ(webSocketClosePayload(1000, "bye"), "\x03\xE8"
                                                  "bye");
    EXPECT_EQ(webSocketClosePayload(1000, QByteArray(500, 'x')).size(), 125);
}

class WebSocketHandshakeTest : public testing::Test {
protected:
    // Nonce and answer of RFC 6455, section 1.3.
    WebSocketHandshake handshake{QUrl(u"wss://live.example/api/123/abc/websocket"_qs), "the sample nonce"};
    static QByteArray accepted(const QByteArray& more = {}) {
        return "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
               "Sec-WebSocket-Accept: s3pPLMBiTxaQ9kYGzzhZRbK+xOo=\r\n" +
               more + "\r\n";
    }
    /// "open: REST", "refused", or "waiting".
    QByteArray outcome(const QByteArray& answer) {
        const auto result = handshake.receive(answer);
        if (!result)
            return "waiting";
        if (*result)
            return "open: " + **result;
        EXPECT_FALSE(result->error().isEmpty());
        return "refused";
    }
};

TEST_F(WebSocketHandshakeTest, AsksAsTheProtocolWants) {
    EXPECT_EQ(handshake.request(),
              "GET /api/123/abc/websocket HTTP/1.1\r\nHost: live.example\r\nUpgrade: websocket\r\n"
              "Connection: Upgrade\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n"
              "Sec-WebSocket-Version: 13\r\nUser-Agent: Mozilla/5.0\r\n\r\n");
    const auto hostLine = [](const QString& url) {
        const auto request = WebSocketHandshake(QUrl(url), "x").request();
        return request.split('\n').at(1).trimmed();
    };
    EXPECT_EQ(hostLine(u"wss://a.example:8443/x"_qs), "Host: a.example:8443");
    EXPECT_EQ(hostLine(u"wss://[::1]:8443/x"_qs), "Host: [::1]:8443");
    EXPECT_TRUE(WebSocketHandshake(QUrl(u"ws://a?b=c%20d"_qs), "x")
                    .request()
                    .startsWith("GET /?b=c%20d HTTP/1.1\r\n"));
}

TEST_F(WebSocketHandshakeTest, OpensAndHandsOverWhatFollows) {
    EXPECT_EQ(outcome(accepted() + serverFrame(1, "o")), "open: " + serverFrame(1, "o"));
}

TEST_F(WebSocketHandshakeTest, TakesTheAnswerInPieces) {
    const auto answer = accepted();
    for (qsizetype i = 0; i + 1 < answer.size(); ++i)
        ASSERT_EQ(outcome(answer.sliced(i, 1)), "waiting") << i;
    EXPECT_EQ(outcome("\nrest"), "open: rest");
}

TEST_F(WebSocketHandshakeTest, WaitsBeyondInterimAnswers) {
    const QByteArray interim = "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Early Hints\r\nLink: x\r\n\r\n";
    EXPECT_EQ(outcome(interim), "waiting");
    EXPECT_EQ(outcome(accepted() + "rest"), "open: rest");
    handshake = WebSocketHandshake(QUrl(u"wss://live.example/"_qs), "the sample nonce");
    EXPECT_EQ(outcome(QByteArray("HTTP/1.1 100 Continue\r\n\r\n").repeated(1000)), "refused")
        << "without end";
}

TEST_F(WebSocketHandshakeTest, JudgesTheSameHoweverALongAnswerComes) {
    for (const int size : {16'383, 16'384, 16'385}) {
        const auto head = accepted();
        const auto answer = accepted("A: " + QByteArray(size - head.size() - 1, 'x') + "\r\n");
        ASSERT_EQ(answer.size(), size + 4);
        handshake = WebSocketHandshake(QUrl(u"wss://live.example/"_qs), "the sample nonce");
        const auto whole = outcome(answer);
        EXPECT_EQ(whole, size > 16'384 ? "refused" : "open: ");
        handshake = WebSocketHandshake(QUrl(u"wss://live.example/"_qs), "the sample nonce");
        QByteArray inPieces = "waiting";
        for (qsizetype i = 0; i < answer.size() && inPieces == "waiting"; ++i)
            inPieces = outcome(answer.sliced(i, 1));
        EXPECT_EQ(inPieces, whole) << size;
    }
}

TEST_F(WebSocketHandshakeTest, DoesNotMindSpellingAndCompany) {
    EXPECT_EQ(outcome("HTTP/1.1 101\r\nserver: x\r\nUPGRADE:WebSocket\r\nconnection: keep-alive, upgrade\r\n"
                      "sec-websocket-accept:  s3pPLMBiTxaQ9kYGzzhZRbK+xOo= \r\n\r\n"),
              "open: ");
}

TEST_F(WebSocketHandshakeTest, RefusesEverythingElse) {
    const std::vector<QByteArray> answers{
        "HTTP/1.1 200 OK\r\n\r\n",
        "HTTP/1.1 1010 X\r\nUpgrade: websocket\r\n\r\n",
        "HTTP/1.0 101 X\r\n\r\n",
        "garbage\r\n\r\n",
        "\r\n\r\n",
        "HTTP/1.1 101 X\r\n\r\n",
        accepted().replace("s3pP", "S3pP"),
        accepted().replace("Upgrade: websocket", "Upgrade: h2c"),
        accepted().replace("Connection: Upgrade", "Connection: close"),
        accepted("Sec-WebSocket-Extensions: permessage-deflate\r\n"),
        accepted("Sec-WebSocket-Protocol: chat\r\n"),
        accepted("Sec-WebSocket-Accept: x\r\n"),
        QByteArray(20000, 'x'),
        "HTTP/1.1 101 X\r\nA: " + QByteArray(17000, 'x') + "\r\n\r\n",
    };
    for (const auto& answer : answers) {
        handshake = WebSocketHandshake(QUrl(u"wss://live.example/"_qs), "the sample nonce");
        EXPECT_EQ(outcome(answer), "refused") << answer.left(80).toStdString();
    }
}

} // namespace
} // namespace zofra::test
