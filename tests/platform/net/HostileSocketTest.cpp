// SPDX-License-Identifier: GPL-3.0-or-later
// The web socket against servers that do not mean well, and against networks that do not work.
#include "tests/platform/net/SocketHarness.h"

#include <QCoreApplication>
#include <QFile>

namespace zofra::test {
namespace {

/// A server that opens the socket and then sends `bytes`.
LoopbackServer::Handler sendingOnceOpen(const QByteArray& bytes) {
    return [bytes](ServerConnection& connection) {
        connection.write(upgradeAnswer(connection) + bytes);
        connection.waitForPeerToClose();
    };
}

/// A server that opens the socket and then sends `bytes` over and over, reading nothing.
LoopbackServer::Handler floodingWith(const QByteArray& bytes) {
    return [bytes](ServerConnection& connection) {
        connection.write(upgradeAnswer(connection));
        while (connection.flood(bytes, 2s)) {
        }
    };
}

qint64 residentKilobytes() {
    QFile file(u"/proc/self/statm"_qs);
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').at(1).toLongLong() * 4 : 0;
}

TEST(HostileSocketTest, TakesFramesThatComeWithTheUpgradeAnswer) {
    LoopbackServer server(sendingOnceOpen(serverFrame(1, "o") + serverFrame(1, "h")));
    Listener listener(plainSocket(server));
    listener.resumeAndListen();
    ASSERT_TRUE(listener.waitForMessages(2));
    EXPECT_EQ(listener.text(0), u"o"_qs);
    EXPECT_EQ(listener.text(1), u"h"_qs);
}

TEST(HostileSocketTest, TakesFramesThatDrip) {
    LoopbackServer server([](ServerConnection& connection) {
        const auto bytes = upgradeAnswer(connection) + serverFrame(1, "dripping") + serverFrame(9, "p");
        for (const char byte : bytes) {
            connection.write(QByteArray(1, byte));
            connection.pause(1ms);
        }
        connection.waitForPeerToClose();
    });
    Listener listener(plainSocket(server));
    listener.resumeAndListen();
    ASSERT_TRUE(listener.waitForMessages(1));
    EXPECT_EQ(listener.text(0), u"dripping"_qs);
}

TEST(HostileSocketTest, TakesAMessageOfExactlyTheCapAndNoMore) {
    for (const int size : {5000, 5001}) {
        LoopbackServer server(sendingOnceOpen(serverFrame(1, QByteArray(size, 'x'))));
        Listener listener(plainSocket(server, {.messageBytes = 5000}));
        listener.resumeAndListen();
        EXPECT_EQ(listener.waitForMessages(1), size == 5000);
        EXPECT_EQ(listener.error.has_value(), size != 5000);
    }
}

class ForbiddenBytesTest : public testing::TestWithParam<std::pair<QByteArray, const char*>> {};

TEST_P(ForbiddenBytesTest, EndTheSocketWithOneLine) {
    LoopbackServer server(sendingOnceOpen(serverFrame(1, "o") + GetParam().first));
    Listener listener(plainSocket(server));
    listener.resumeAndListen();
    ASSERT_TRUE(listener.waitForError());
    EXPECT_EQ(listener.messages.size(), 1U) << "what came before counts";
    EXPECT_EQ(*listener.error,
              u"The server has sent what it may not: "_qs + QString::fromLatin1(GetParam().second));
}

INSTANTIATE_TEST_SUITE_P(
    Frames, ForbiddenBytesTest,
    testing::Values(
        std::pair(QByteArray("\x81\x7F\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 10), "a message is too long"),
        std::pair(QByteArray("\x81\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 10), "a length is malformed"),
        std::pair(serverFrame(1, "\xFF\xFE"), "a text is not valid UTF-8"),
        std::pair(QByteArray("\x81\x81\0\0\0\0o", 7), "a frame of the server is masked"),
        std::pair(QByteArray(10, static_cast<char>(0xFF)), "reserved bits are set"),
        std::pair(serverFrame(0, "x"), "the parts of a message do not fit together")));

TEST(HostileSocketTest, APingFloodEndsItAndCostsLittle) {
    LoopbackServer server(floodingWith(serverFrame(9, QByteArray(125, 'x')).repeated(5000)));
    Listener listener(plainSocket(server));
    const auto before = residentKilobytes();
    listener.resumeAndListen();
    ASSERT_TRUE(listener.waitForError());
    EXPECT_EQ(*listener.error, u"The server sends frames without end."_qs);
    EXPECT_LT(residentKilobytes() - before, 20'000);
}

TEST(HostileSocketTest, AFloodOfEmptyPartsEndsIt) {
    LoopbackServer server(floodingWith(serverFrame(0, {}, Part::notLast).repeated(10000)));
    Listener listener(plainSocket(server));
    listener.resumeAndListen();
    ASSERT_TRUE(listener.waitForError());

    LoopbackServer begun([](ServerConnection& connection) {
        connection.write(upgradeAnswer(connection) + serverFrame(1, {}, Part::notLast));
        while (connection.flood(serverFrame(0, {}, Part::notLast).repeated(10000), 2s)) {
        }
    });
    Listener second(plainSocket(begun));
    second.resumeAndListen();
    ASSERT_TRUE(second.waitForError());
    EXPECT_EQ(*second.error, u"The server sends frames without end."_qs);
}

TEST(HostileSocketTest, MessagesThatNobodyReadsEndItAtTheCap) {
    LoopbackServer server(sendingOnceOpen(serverFrame(1, "x").repeated(20)));
    Listener listener(plainSocket(server, {.waitingMessages = 10}));
    listener.socket->resume();
    runFor(100ms);
    listener.listen();
    ASSERT_TRUE(listener.waitForError());
    EXPECT_EQ(listener.messages.size(), 10U) << "those that were kept are delivered first";
    EXPECT_EQ(*listener.error, u"The server sends messages faster than they are read."_qs);
}

TEST(HostileSocketTest, LargeMessagesThatNobodyReadsEndItAtTheCap) {
    LoopbackServer server(sendingOnceOpen(serverFrame(2, QByteArray(1000, 'x')).repeated(20)));
    Listener listener(plainSocket(server, {.waitingBytes = 10'000}));
    listener.socket->resume();
    runFor(100ms);
    listener.listen();
    ASSERT_TRUE(listener.waitForError());
    EXPECT_EQ(listener.messages.size(), 10U);
}

TEST(HostileSocketTest, AFloodOfMessagesIsReadAtABoundedRate) {
    LoopbackServer server(floodingWith(serverFrame(1, "h").repeated(20000)));
    Listener listener(plainSocket(server, {.messages = {100, 50}}));
    QElapsedTimer clock;
    clock.start();
    listener.resumeAndListen();
    ASSERT_TRUE(listener.waitForMessages(80));
    EXPECT_GE(clock.elapsed(), 250) << "80 = 50 at once and 30 at 100 a second";
    EXPECT_EQ(listener.error, std::nullopt) << "the rest waits in the network";
}

TEST(HostileSocketTest, LongMessagesAreReadAtABoundedRate) {
    LoopbackServer server(floodingWith(serverFrame(1, QByteArray(100'000, 'x'))));
    Listener listener(plainSocket(server, {.bytes = {1'000'000, 300'000}}));
    QElapsedTimer clock;
    clock.start();
    listener.resumeAndListen();
    ASSERT_TRUE(listener.waitForMessages(7));
    EXPECT_GE(clock.elapsed(), 300) << "3 at once, less the last turn, and the others at 10 a second";
    EXPECT_EQ(listener.error, std::nullopt);
}

TEST(HostileSocketTest, APeerThatTakesNothingMakesSendingFail) {
    LoopbackServer server([](ServerConnection& connection) {
        connection.write(upgradeAnswer(connection) + serverFrame(1, "o"));
        while (!connection.isStopping())
            connection.pause(10ms);
    });
    Listener listener(plainSocket(server));
    listener.resumeAndListen();
    ASSERT_TRUE(listener.waitForMessages(1));
    for (int i = 0; i < 100; ++i)
        listener.send(QByteArray(200'000, 'x'));
    ASSERT_TRUE(waitUntil([&] { return listener.sent.size() == 100; }));
    EXPECT_GT(
        std::count_if(listener.sent.begin(), listener.sent.end(), [](const auto& result) { return !result; }),
        50);
}

TEST(HostileSocketTest, SendingBeforeItIsOpenFails) {
    LoopbackServer server([](ServerConnection& connection) { connection.waitForPeerToClose(); });
    Listener listener(plainSocket(server));
    listener.send(u"x"_qs);
    ASSERT_TRUE(waitUntil([&listener] { return listener.sent.size() == 1; }));
    ASSERT_FALSE(listener.sent[0]);
    EXPECT_EQ(listener.sent[0].error(), u"The connection is not open."_qs);
}

class RefusedUpgradeTest : public testing::TestWithParam<std::pair<QByteArray, const char*>> {};

TEST_P(RefusedUpgradeTest, SaysWhy) {
    LoopbackServer server([](ServerConnection& connection) {
        connection.readUntil("\r\n\r\n");
        connection.write(GetParam().first);
        connection.waitForPeerToClose();
    });
    Listener listener(plainSocket(server));
    listener.resumeAndListen();
    ASSERT_TRUE(listener.waitForError());
    EXPECT_EQ(*listener.error, QString::fromLatin1(GetParam().second));
}

INSTANTIATE_TEST_SUITE_P(
    Answers, RefusedUpgradeTest,
    testing::Values(std::pair(QByteArray("HTTP/1.1 502 Bad Gateway\r\n\r\n"),
                              "The server answered with status 502 instead of opening a web socket."),
                    std::pair(QByteArray("HTTP/1.1 301 X\r\nLocation: ws://127.0.0.1/\r\n\r\n"),
                              "The server answered with status 301 instead of opening a web socket."),
                    std::pair(QByteArray("SSH-2.0-x\r\n\r\n"), "The server does not speak HTTP."),
                    std::pair(QByteArray("HTTP/1.1 101 X\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                                         "Sec-WebSocket-Accept: wrong\r\n\r\n"),
                              "The server's answer does not open a web socket."),
                    std::pair(QByteArray(100'000, 'x'), "The server's answer is too long.")));

TEST(HostileSocketTest, ASilentServerIsLeftInTime) {
    for (const auto& scheme : {u"ws"_qs, u"wss"_qs}) {
        LoopbackServer server([](ServerConnection& connection) { connection.waitForPeerToClose(); });
        Listener listener(
            TestSocket(QUrl(server.url(u"/"_qs, scheme)), std::nullopt, {.handshakeTime = 100ms}));
        listener.resumeAndListen();
        ASSERT_TRUE(listener.waitForError());
        EXPECT_EQ(*listener.error, u"The connection could not be made in time."_qs);
    }
}

TEST(HostileSocketTest, AServerThatHangsUpDuringTheHandshakeIsAnError) {
    LoopbackServer server([](ServerConnection& connection) { connection.readUntil("\r\n\r\n"); });
    Listener listener(plainSocket(server));
    listener.resumeAndListen();
    EXPECT_TRUE(listener.waitForError());
}

TEST(HostileSocketTest, ARefusedPortIsAnError) {
    QUrl url;
    {
        LoopbackServer server([](ServerConnection&) {});
        url = QUrl(server.url(u"/"_qs, u"ws"_qs));
    }
    Listener listener{TestSocket(url)};
    listener.resumeAndListen();
    ASSERT_TRUE(listener.waitForError());
    EXPECT_FALSE(listener.error->isEmpty());
}

TEST(HostileSocketTest, AnAddressOfAnotherKindIsAnError) {
    for (const auto& url : {u"https://127.0.0.1/"_qs, u"file:///x"_qs, QString()}) {
        Listener listener{TestSocket(QUrl(url))};
        listener.resumeAndListen();
        ASSERT_TRUE(listener.waitForError());
        EXPECT_EQ(*listener.error, u"The address is not one of a web socket."_qs);
    }
}

TEST(HostileSocketTest, MayEndAtAnyMoment) {
    LoopbackServer server(sendingOnceOpen(serverFrame(1, "o")));
    for (int i = 0; i < 60; ++i) {
        Listener listener(plainSocket(server));
        listener.resumeAndListen();
        for (int turn = 0; turn < i / 2; ++turn)
            QCoreApplication::processEvents();
        if (i % 2 == 0)
            listener.socket->cancel(SocketCloseCode::normalClosure, std::nullopt);
    }
    runFor(50ms);
}

TEST(HostileSocketTest, CancelBeforeResumeMeansNoConnection) {
    LoopbackServer server(sendingOnceOpen({}));
    Listener listener(plainSocket(server));
    listener.socket->cancel(SocketCloseCode::normalClosure, std::nullopt);
    listener.resumeAndListen();
    ASSERT_TRUE(listener.waitForError());
    EXPECT_EQ(server.accepted(), 0);
}

} // namespace
} // namespace zofra::test
