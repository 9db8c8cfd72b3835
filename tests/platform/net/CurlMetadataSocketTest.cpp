// SPDX-License-Identifier: GPL-3.0-or-later
// The web socket against a server that is not ours: Qt's.
#include "tests/platform/net/SocketHarness.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QWebSocket>
#include <QWebSocketServer>

#include <atomic>
#include <future>

namespace zofra::test {
namespace {

/// Qt's web-socket server over TLS.
class TlsWebSocketServer {
public:
    TlsWebSocketServer(TestAuthority& authority, const QString& names) {
        const auto identity = authority.identityFor(names);
        QFile keyFile(identity.keyFile);
        EXPECT_TRUE(keyFile.open(QIODevice::ReadOnly));
        auto configuration = QSslConfiguration::defaultConfiguration();
        configuration.setLocalCertificateChain(QSslCertificate::fromPath(identity.certificateFile));
        configuration.setPrivateKey(QSslKey(keyFile.readAll(), QSsl::Ec));
        configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
        server.setSslConfiguration(configuration);
        EXPECT_TRUE(server.listen(QHostAddress::LocalHost));
        QObject::connect(&server, &QWebSocketServer::newConnection, &server, [this] {
            peer.reset(server.nextPendingConnection());
            QObject::connect(peer.get(), &QWebSocket::textMessageReceived, &server,
                             [this](const QString& text) { texts.push_back(text); });
            QObject::connect(peer.get(), &QWebSocket::binaryMessageReceived, &server,
                             [this](const QByteArray& bytes) { binaries.push_back(bytes); });
            QObject::connect(peer.get(), &QWebSocket::disconnected, &server, [this] {
                closeCode = peer->closeCode();
                closeReason = peer->closeReason();
            });
            QObject::connect(peer.get(), &QWebSocket::pong, &server, [this] { ++pongs; });
        });
    }
    [[nodiscard]] QUrl url() const {
        return QUrl(u"wss://127.0.0.1:%1/api/1/2/websocket"_qs.arg(server.serverPort()));
    }

    QWebSocketServer server{u"test"_qs, QWebSocketServer::SecureMode};
    std::vector<QString> texts;
    std::vector<QByteArray> binaries;
    int pongs = 0;
    std::optional<int> closeCode;
    QString closeReason;
    std::unique_ptr<QWebSocket> peer; // last, because it still tells of its end
};

qsizetype ownThreads() {
    return QDir(u"/proc/self/task"_qs).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
}

class CurlMetadataSocketTest : public testing::Test {
protected:
    [[nodiscard]] Listener open() {
        Listener listener(TestSocket(server.url(), authority.certificateFile()));
        listener.socket->resume();
        EXPECT_TRUE(waitUntil([this] { return server.peer != nullptr; }));
        return listener;
    }
    TestAuthority authority;
    TlsWebSocketServer server{authority, u"IP:127.0.0.1"_qs};
};

TEST_F(CurlMetadataSocketTest, DoesNotConnectBeforeResume) {
    Listener listener(TestSocket(server.url(), authority.certificateFile()));
    listener.listen();
    runFor(50ms);
    EXPECT_EQ(server.peer, nullptr);
    listener.socket->resume();
    EXPECT_TRUE(waitUntil([this] { return server.peer != nullptr; }));
    EXPECT_EQ(server.peer->requestUrl().path(), u"/api/1/2/websocket"_qs);
}

// A thread that is woken would have to be started first.
TEST_F(CurlMetadataSocketTest, AskingForAMessageWakesNobody) {
    Listener listener(TestSocket(server.url(), authority.certificateFile()));
    const auto before = ownThreads();
    listener.listen();
    EXPECT_EQ(ownThreads(), before);
    listener.socket->resume();
    EXPECT_GT(ownThreads(), before);
}

TEST_F(CurlMetadataSocketTest, ReceivesTextsAndBytesInOrder) {
    auto listener = open();
    listener.listen();
    server.peer->sendTextMessage(u"o"_qs);
    server.peer->sendBinaryMessage(QByteArray("\0\xFF", 2));
    server.peer->sendTextMessage(u"Déjà 日 😀"_qs);
    ASSERT_TRUE(listener.waitForMessages(3));
    EXPECT_EQ(listener.text(0), u"o"_qs);
    EXPECT_EQ(std::get<QByteArray>(listener.messages[1]), QByteArray("\0\xFF", 2));
    EXPECT_EQ(listener.text(2), u"Déjà 日 😀"_qs);
}

TEST_F(CurlMetadataSocketTest, KeepsMessagesUntilTheyAreAskedFor) {
    auto listener = open();
    server.peer->sendTextMessage(u"one"_qs);
    server.peer->sendTextMessage(u"two"_qs);
    runFor(50ms);
    listener.listen();
    ASSERT_TRUE(listener.waitForMessages(2));
    EXPECT_EQ(listener.text(0), u"one"_qs);
    EXPECT_EQ(listener.text(1), u"two"_qs);
}

TEST_F(CurlMetadataSocketTest, ReceivesAMebibyteThroughItsSmallBuffer) {
    auto listener = open();
    listener.listen();
    const QString large(1024 * 1024, u'x');
    for (int i = 0; i < 3; ++i)
        server.peer->sendTextMessage(large);
    ASSERT_TRUE(listener.waitForMessages(3)) << listener.error.value_or(QString()).toStdString();
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_TRUE(listener.text(i) == large);
}

TEST_F(CurlMetadataSocketTest, ReceivesAMessageInManyParts) {
    auto listener = open();
    listener.listen();
    server.peer->setOutgoingFrameSize(1000);
    server.peer->sendTextMessage(QString(300'000, u'é'));
    ASSERT_TRUE(listener.waitForMessages(1)) << listener.error.value_or(QString()).toStdString();
    EXPECT_EQ(listener.text(0), QString(300'000, u'é'));
}

TEST_F(CurlMetadataSocketTest, SendsTextsAndBytes) {
    auto listener = open();
    listener.listen();
    const QString large(200'000, u'é');
    server.peer->sendTextMessage(u"o"_qs);
    ASSERT_TRUE(listener.waitForMessages(1));
    listener.send(u"[\"join\"]"_qs);
    listener.send(QByteArray("\x01\0", 2));
    listener.send(large);
    EXPECT_TRUE(listener.sent.empty()) << "never in place";
    ASSERT_TRUE(waitUntil([&] { return server.texts.size() == 2 && listener.sent.size() == 3; }));
    EXPECT_EQ(server.texts[0], u"[\"join\"]"_qs);
    EXPECT_EQ(server.texts[1], large);
    EXPECT_EQ(server.binaries, std::vector{QByteArray("\x01\0", 2)});
    for (const auto& result : listener.sent)
        EXPECT_TRUE(result);
}

TEST_F(CurlMetadataSocketTest, AnswersPings) {
    auto listener = open();
    listener.listen();
    server.peer->ping("are you there?");
    EXPECT_TRUE(waitUntil([this] { return server.pongs == 1; }));
}

TEST_F(CurlMetadataSocketTest, ClosesWithCodeAndReason) {
    auto listener = open();
    listener.listen();
    server.peer->sendTextMessage(u"o"_qs);
    ASSERT_TRUE(listener.waitForMessages(1));
    listener.socket->cancel(SocketCloseCode::normalClosure, "good-bye");
    ASSERT_TRUE(waitUntil([this] { return server.closeCode.has_value(); }));
    EXPECT_EQ(server.closeCode, 1000);
    EXPECT_EQ(server.closeReason, u"good-bye"_qs);
    EXPECT_TRUE(listener.waitForError());
}

TEST_F(CurlMetadataSocketTest, TheCloseReachesTheServerAlsoWhenTheSocketEndsAtOnce) {
    auto listener = open();
    listener.listen();
    server.peer->sendTextMessage(u"o"_qs);
    ASSERT_TRUE(listener.waitForMessages(1));
    server.peer->sendTextMessage(QString(500'000, u'x')); // on its way while the socket closes
    listener.socket->cancel(SocketCloseCode::normalClosure, std::nullopt);
    listener.socket.reset();
    // The socket's thread may have been faster than this one: what it has told by now may arrive.
    QCoreApplication::sendPostedEvents(listener.context.get());
    const auto error = listener.error;
    const auto messages = listener.messages;
    ASSERT_TRUE(waitUntil([this] { return server.closeCode.has_value(); }));
    EXPECT_EQ(server.closeCode, 1000);
    EXPECT_EQ(server.closeReason, QString());
    EXPECT_EQ(listener.error, error) << "no handler after the end";
    EXPECT_EQ(listener.messages, messages);
}

TEST_F(CurlMetadataSocketTest, EndingItClosesItAndCallsNobody) {
    auto listener = open();
    listener.listen();
    server.peer->sendTextMessage(u"o"_qs);
    ASSERT_TRUE(listener.waitForMessages(1));
    server.peer->sendTextMessage(u"late"_qs);
    listener.socket.reset();
    ASSERT_TRUE(waitUntil([this] { return server.closeCode.has_value(); }));
    EXPECT_EQ(server.closeCode, 1001);
    runFor(20ms);
    EXPECT_EQ(listener.messages.size(), 1U);
    EXPECT_EQ(listener.error, std::nullopt);
}

TEST_F(CurlMetadataSocketTest, TellsWhenTheServerCloses) {
    auto listener = open();
    listener.listen();
    server.peer->sendTextMessage(u"last words"_qs);
    server.peer->close(QWebSocketProtocol::CloseCodeGoingAway, u"restarting\nsoon"_qs);
    ASSERT_TRUE(listener.waitForError());
    ASSERT_EQ(listener.messages.size(), 1U) << "what came before counts";
    EXPECT_EQ(listener.error, u"The server has closed the connection (1001) restarting soon"_qs);
}

TEST_F(CurlMetadataSocketTest, TellsWhenTheServerBreaksOff) {
    auto listener = open();
    listener.listen();
    server.peer->sendTextMessage(u"o"_qs);
    ASSERT_TRUE(listener.waitForMessages(1));
    server.peer->abort();
    ASSERT_TRUE(listener.waitForError());
    EXPECT_FALSE(listener.error->isEmpty());
}

TEST_F(CurlMetadataSocketTest, AHandlerMayEndTheSocket) {
    auto listener = open();
    std::atomic<bool> called = false;
    listener.socket->receive([&](const Result<SocketMessage>&) {
        called = true;
        listener.socket.reset();
    });
    server.peer->sendTextMessage(u"one"_qs);
    server.peer->sendTextMessage(u"two"_qs);
    EXPECT_TRUE(waitUntil([this] { return server.closeCode.has_value(); }));
    EXPECT_TRUE(called);
}

TEST_F(CurlMetadataSocketTest, ASecondReceiveFails) {
    auto listener = open();
    listener.listen();
    std::promise<QString> error;
    listener.socket->receive(
        [&error](const Result<SocketMessage>& result) { error.set_value(result.error()); });
    EXPECT_FALSE(error.get_future().get().isEmpty());
    server.peer->sendTextMessage(u"o"_qs);
    EXPECT_TRUE(listener.waitForMessages(1)) << "the first one still stands";
}

TEST_F(CurlMetadataSocketTest, RefusesAnUnknownAuthority) {
    TestAuthority other;
    for (const auto& extra : {std::optional<QString>(), std::optional(other.certificateFile())}) {
        Listener listener(TestSocket(server.url(), extra));
        listener.resumeAndListen();
        ASSERT_TRUE(listener.waitForError());
        EXPECT_FALSE(listener.error->isEmpty());
        EXPECT_FALSE(listener.error->contains(u'\n'));
        EXPECT_EQ(server.peer, nullptr);
    }
}

TEST_F(CurlMetadataSocketTest, RefusesACertificateForAnotherName) {
    TlsWebSocketServer elsewhere(authority, u"DNS:other.example"_qs);
    Listener listener(TestSocket(elsewhere.url(), authority.certificateFile()));
    listener.resumeAndListen();
    ASSERT_TRUE(listener.waitForError());
    EXPECT_EQ(elsewhere.peer, nullptr);
}

TEST_F(CurlMetadataSocketTest, SaysWhenTheExtraAuthorityCannotBeRead) {
    Listener listener(TestSocket(server.url(), u"/nowhere/ca.pem"_qs));
    listener.resumeAndListen();
    ASSERT_TRUE(listener.waitForError());
    EXPECT_EQ(listener.error,
              u"No certificate could be read from /nowhere/ca.pem: No such file or directory"_qs);
}

} // namespace
} // namespace zofra::test
