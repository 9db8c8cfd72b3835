// SPDX-License-Identifier: GPL-3.0-or-later
// How a stream is fetched piece by piece, and what it is refused.
#include "platform/linux/net/HttpStream.h"

#include "tests/platform/net/HttpHarness.h"
#include "tests/support/ScopedEnvironment.h"

namespace zofra::test {
namespace {

HttpStream::Settings settings(const std::optional<QString>& authorityFile = std::nullopt) {
    return {TrustedAuthorities::find(authorityFile), "Test/1.0", 10s};
}

/// The bytes until the end, and how it ended: 0 in order, -1 not.
struct Whole {
    QByteArray bytes;
    std::int64_t end = 0;
};
Whole readWhole(HttpStream& stream, std::size_t piece = 4096) {
    Whole whole;
    std::vector<char> buffer(piece);
    while (true) {
        const auto count = stream.read(buffer.data(), buffer.size());
        if (count <= 0) {
            whole.end = count;
            return whole;
        }
        whole.bytes.append(buffer.data(), static_cast<qsizetype>(count));
    }
}
Whole readWhole(const QString& url, const std::optional<QString>& authorityFile = std::nullopt) {
    HttpStream stream(url.toUtf8(), settings(authorityFile));
    return readWhole(stream);
}

/// "/N" leads to "/N-1", and "/0" is the stream.
LoopbackServer::Handler countdown() {
    return serving([](const QByteArray& head) {
        const int left = head.mid(5, head.indexOf(' ', 5) - 5).toInt();
        return left == 0 ? response(200, "sound") : redirect(u"/"_qs + QString::number(left - 1));
    });
}

TEST(HttpStreamTest, asksForTheAddressUnderItsName) {
    QByteArray asked;
    LoopbackServer server(serving([&](const QByteArray& head) {
        asked = head;
        return response(200, "sound");
    }));
    EXPECT_EQ(readWhole(server.url(u"/a%20b?c=1"_qs)).bytes, "sound");
    EXPECT_TRUE(asked.startsWith("GET /a%20b?c=1 HTTP/1.1\r\n")) << asked.constData();
    EXPECT_TRUE(asked.contains("\r\nUser-Agent: Test/1.0\r\n")) << asked.constData();
}

TEST(HttpStreamTest, asksLocalHostsWithoutAProxyAndOthersThroughIt) {
    LoopbackServer server(serving([](const QByteArray&) { return response(200, "direct"); }));
    QByteArray asked;
    LoopbackServer proxy(serving([&](const QByteArray& head) {
        asked = head;
        return response(200, "proxied");
    }));
    ScopedEnvironment environment;
    environment.set("http_proxy", proxy.url(QString()).toUtf8());
    environment.set("no_proxy", "");
    EXPECT_EQ(readWhole(server.url(u"/"_qs)).bytes, "direct");
    EXPECT_EQ(readWhole(u"http://radio.test/x"_qs).bytes, "proxied");
    EXPECT_TRUE(asked.startsWith("GET http://radio.test/x HTTP/1.1\r\n")) << asked.constData();
}

TEST(HttpStreamTest, sendsNothingBeforeTheFirstRead) {
    LoopbackServer server(serving([](const QByteArray&) { return response(200, "sound"); }));
    { HttpStream stream(server.url(u"/"_qs).toUtf8(), settings()); }
    EXPECT_EQ(server.accepted(), 0);
}

TEST(HttpStreamTest, givesEveryByteInOrderHoweverSmallThePieces) {
    QByteArray body;
    for (int i = 0; body.size() < 1'000'000; ++i)
        body += QByteArray::number(i) + ' ';
    LoopbackServer server(serving([&](const QByteArray&) { return response(200, body); }));
    for (const std::size_t piece : {std::size_t(7), std::size_t(4096), std::size_t(10'000'000)}) {
        HttpStream stream(server.url(u"/"_qs).toUtf8(), settings());
        const auto whole = readWhole(stream, piece);
        EXPECT_TRUE(whole.bytes == body) << piece;
        EXPECT_EQ(whole.end, 0) << piece;
    }
}

TEST(HttpStreamTest, leavesInTheNetworkWhatNobodyReads) {
    constexpr qint64 endless = 256'000'000;
    std::promise<qint64> taken;
    LoopbackServer server([&](ServerConnection& connection) {
        connection.readUntil("\r\n\r\n");
        connection.write("HTTP/1.0 200 OK\r\n\r\n");
        const QByteArray piece(65'536, 'x');
        qint64 written = 0;
        while (written < endless && connection.flood(piece, 300ms))
            written += piece.size();
        taken.set_value(written);
    });
    HttpStream stream(server.url(u"/"_qs).toUtf8(), settings());
    char byte = 0;
    ASSERT_EQ(stream.read(&byte, 1), 1);
    auto result = taken.get_future();
    ASSERT_EQ(result.wait_for(30s), std::future_status::ready);
    EXPECT_LT(result.get(), endless) << "the server was never made to wait";
}

TEST(HttpStreamTest, understandsTheStatusLineOfOldStreamingServers) {
    LoopbackServer server([](ServerConnection& connection) {
        connection.readUntil("\r\n\r\n");
        connection.write("ICY 200 OK\r\nicy-name: x\r\n\r\nsound");
    });
    EXPECT_EQ(readWhole(server.url(u"/"_qs)).bytes, "sound");
}

TEST(HttpStreamTest, failsOnAnErrorPageWithoutGivingItOn) {
    for (const int status : {404, 403, 503}) {
        LoopbackServer server(serving([&](const QByteArray&) { return response(status, "<html>"); }));
        const auto whole = readWhole(server.url(u"/"_qs));
        EXPECT_EQ(whole.bytes, "") << status;
        EXPECT_EQ(whole.end, -1) << status;
    }
}

TEST(HttpStreamTest, failsOnARefusedPort) {
    QString url;
    {
        LoopbackServer server(countdown());
        url = server.url(u"/0"_qs);
    }
    EXPECT_EQ(readWhole(url).end, -1);
}

TEST(HttpStreamTest, failsWhenItBreaksAfterGivingWhatCame) {
    LoopbackServer server([](ServerConnection& connection) {
        connection.readUntil("\r\n\r\n");
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nsound");
    });
    const auto whole = readWhole(server.url(u"/"_qs));
    EXPECT_EQ(whole.bytes, "sound");
    EXPECT_EQ(whole.end, -1);
}

TEST(HttpStreamTest, givesUpOnAServerThatSaysNothing) {
    LoopbackServer server([](ServerConnection& connection) { connection.waitForPeerToClose(); });
    HttpStream stream(server.url(u"/"_qs).toUtf8(), {{}, "Test/1.0", 200ms});
    EXPECT_EQ(readWhole(stream).end, -1);
}

TEST(HttpStreamTest, givesUpOnAStreamThatStops) {
    LoopbackServer server([](ServerConnection& connection) {
        connection.readUntil("\r\n\r\n");
        connection.write("HTTP/1.0 200 OK\r\n\r\nsound");
        connection.waitForPeerToClose();
    });
    HttpStream stream(server.url(u"/"_qs).toUtf8(), {{}, "Test/1.0", 500ms});
    const auto whole = readWhole(stream);
    EXPECT_EQ(whole.bytes, "sound");
    EXPECT_EQ(whole.end, -1);
}

TEST(HttpStreamTest, givesUpOnEndlessHeaders) {
    LoopbackServer server([](ServerConnection& connection) {
        connection.readUntil("\r\n\r\n");
        connection.write("HTTP/1.0 200 OK\r\n");
        while (connection.write("X-More: " + QByteArray(1000, 'x') + "\r\n")) {
        }
    });
    EXPECT_EQ(readWhole(server.url(u"/"_qs)).end, -1);
}

TEST(HttpStreamTest, isCancelledWhileItWaits) {
    LoopbackServer server([](ServerConnection& connection) { connection.waitForPeerToClose(); });
    HttpStream stream(server.url(u"/"_qs).toUtf8(), {{}, "Test/1.0", 1h});
    std::thread canceller([&] {
        while (server.accepted() == 0)
            std::this_thread::yield();
        stream.cancel();
    });
    char byte = 0;
    EXPECT_EQ(stream.read(&byte, 1), -1);
    canceller.join();
    EXPECT_EQ(stream.read(&byte, 1), -1) << "and stays so";
}

TEST(HttpStreamTest, followsFiveRedirects) {
    LoopbackServer server(countdown());
    EXPECT_EQ(readWhole(server.url(u"/5"_qs)).bytes, "sound");
}

TEST(HttpStreamTest, doesNotFollowSixRedirects) {
    LoopbackServer server(countdown());
    const auto whole = readWhole(server.url(u"/6"_qs));
    EXPECT_EQ(whole.bytes, "");
    EXPECT_EQ(whole.end, -1);
}

class SecureStreamTest : public testing::Test {
protected:
    TestAuthority authority;
    TlsIdentity identity = authority.identityFor(u"IP:127.0.0.1"_qs);
    LoopbackServer plain{serving([this](const QByteArray& head) {
        return head.startsWith("GET /up") ? redirect(upGoal) : response(200, "plain");
    })};
    LoopbackServer other{serving([](const QByteArray&) { return response(200, "other"); }), identity};
    LoopbackServer secure{serving([this](const QByteArray& head) {
                              if (head.startsWith("GET /down"))
                                  return redirect(plain.url(u"/"_qs));
                              if (head.startsWith("GET /aside"))
                                  return redirect(other.url(u"/"_qs, u"https"_qs));
                              return response(200, "secure");
                          }),
                          identity};
    QString upGoal;
    QString url(const QString& path) { return secure.url(path, u"https"_qs); }
};

TEST_F(SecureStreamTest, isVerifiedAgainstTheAuthorities) {
    EXPECT_EQ(readWhole(url(u"/"_qs), authority.certificateFile()).bytes, "secure");
    const TestAuthority another;
    for (const auto& others : {std::optional(another.certificateFile()), std::optional<QString>()}) {
        const auto whole = readWhole(url(u"/"_qs), others);
        EXPECT_EQ(whole.bytes, "");
        EXPECT_EQ(whole.end, -1);
    }
}

TEST_F(SecureStreamTest, isVerifiedByItsName) {
    const auto whole =
        readWhole(url(u"/"_qs).replace(u"127.0.0.1"_qs, u"localhost"_qs), authority.certificateFile());
    EXPECT_EQ(whole.bytes, "");
    EXPECT_EQ(whole.end, -1);
}

TEST_F(SecureStreamTest, followsARedirectToAnotherSecureAddress) {
    EXPECT_EQ(readWhole(url(u"/aside"_qs), authority.certificateFile()).bytes, "other");
}

TEST_F(SecureStreamTest, neverFollowsARedirectToAnInsecureAddress) {
    const auto whole = readWhole(url(u"/down"_qs), authority.certificateFile());
    EXPECT_EQ(whole.bytes, "");
    EXPECT_EQ(whole.end, -1);
    EXPECT_EQ(plain.accepted(), 0);
}

TEST_F(SecureStreamTest, goesUpToASecureAddressButNeverDownAgain) {
    upGoal = url(u"/"_qs);
    EXPECT_EQ(readWhole(plain.url(u"/up"_qs), authority.certificateFile()).bytes, "secure");
    upGoal = url(u"/down"_qs);
    const auto whole = readWhole(plain.url(u"/up"_qs), authority.certificateFile());
    EXPECT_EQ(whole.bytes, "");
    EXPECT_EQ(whole.end, -1);
}

} // namespace
} // namespace zofra::test
