// SPDX-License-Identifier: GPL-3.0-or-later
// The web socket against a server that is not ours: Qt's.
#include "tests/platform/net/SocketHarness.h"

#include <QFile>
#include <QNetworkProxy>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QWebSocket>
#include <QWebSocketServer>

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

class MetadataSocket : public testing::Test {
protected:
    [[nodiscard]] Listener open() {
        Listener listener(qtWebSockets(authority.certificateFile())(server.url()));
        listener.socket->resume();
        EXPECT_TRUE(waitUntil([this] { return server.peer != nullptr; }));
        return listener;
    }
    TestAuthority authority;
    TlsWebSocketServer server{authority, u"IP:127.0.0.1"_qs};
};

TEST_F(MetadataSocket, DoesNotConnectBeforeResume) {
    Listener listener(qtWebSockets(authority.certificateFile())(server.url()));
    listener.listen();
    runFor(50ms);
    EXPECT_EQ(server.peer, nullptr);
    listener.socket->resume();
    EXPECT_TRUE(waitUntil([this] { return server.peer != nullptr; }));
    EXPECT_EQ(server.peer->requestUrl().path(), u"/api/1/2/websocket"_qs);
}

TEST_F(MetadataSocket, ReceivesTextsAndBytesInOrder) {
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

TEST_F(MetadataSocket, KeepsMessagesUntilTheyAreAskedFor) {
    auto listener = open();
    server.peer->sendTextMessage(u"one"_qs);
    server.peer->sendTextMessage(u"two"_qs);
    runFor(50ms);
    listener.listen();
    ASSERT_TRUE(listener.waitForMessages(2));
    EXPECT_EQ(listener.text(0), u"one"_qs);
    EXPECT_EQ(listener.text(1), u"two"_qs);
}

TEST_F(MetadataSocket, ReceivesAMebibyteThroughItsSmallBuffer) {
    auto listener = open();
    listener.listen();
    const QString large(1024 * 1024, u'x');
    for (int i = 0; i < 3; ++i)
        server.peer->sendTextMessage(large);
    ASSERT_TRUE(listener.waitForMessages(3)) << listener.error.value_or(QString()).toStdString();
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_TRUE(listener.text(i) == large);
}

TEST_F(MetadataSocket, ReceivesAMessageInManyParts) {
    auto listener = open();
    listener.listen();
    server.peer->setOutgoingFrameSize(1000);
    server.peer->sendTextMessage(QString(300'000, u'é'));
    ASSERT_TRUE(listener.waitForMessages(1)) << listener.error.value_or(QString()).toStdString();
    EXPECT_EQ(listener.text(0), QString(300'000, u'é'));
}

TEST_F(MetadataSocket, SendsTextsAndBytes) {
    auto listener = open();
    listener.listen();
    std::vector<std::optional<SocketError>> results;
    const auto note = [&results](const std::optional<SocketError>& error) { results.push_back(error); };
    const QString large(200'000, u'é');
    server.peer->sendTextMessage(u"o"_qs);
    ASSERT_TRUE(listener.waitForMessages(1));
    listener.socket->send(u"[\"join\"]"_qs, note);
    listener.socket->send(QByteArray("\x01\0", 2), note);
    listener.socket->send(large, note);
    EXPECT_TRUE(results.empty()) << "never in place";
    ASSERT_TRUE(waitUntil([&] { return server.texts.size() == 2 && results.size() == 3; }));
    EXPECT_EQ(server.texts[0], u"[\"join\"]"_qs);
    EXPECT_EQ(server.texts[1], large);
    EXPECT_EQ(server.binaries, std::vector{QByteArray("\x01\0", 2)});
    for (const auto& result : results)
        EXPECT_FALSE(result);
}

TEST_F(MetadataSocket, AnswersPings) {
    auto listener = open();
    listener.listen();
    server.peer->ping("are you there?");
    EXPECT_TRUE(waitUntil([this] { return server.pongs == 1; }));
}

TEST_F(MetadataSocket, ClosesWithCodeAndReason) {
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

TEST_F(MetadataSocket, TheCloseReachesTheServerAlsoWhenTheSocketEndsAtOnce) {
    auto listener = open();
    listener.listen();
    server.peer->sendTextMessage(u"o"_qs);
    ASSERT_TRUE(listener.waitForMessages(1));
    server.peer->sendTextMessage(QString(500'000, u'x')); // on its way while the socket closes
    listener.socket->cancel(SocketCloseCode::normalClosure, std::nullopt);
    listener.socket.reset();
    ASSERT_TRUE(waitUntil([this] { return server.closeCode.has_value(); }));
    EXPECT_EQ(server.closeCode, 1000);
    EXPECT_EQ(server.closeReason, QString());
    EXPECT_EQ(listener.error, std::nullopt) << "no handler after the end";
    EXPECT_EQ(listener.messages.size(), 1U);
}

TEST_F(MetadataSocket, EndingItClosesItAndCallsNobody) {
    auto listener = open();
    listener.listen();
    server.peer->sendTextMessage(u"o"_qs);
    ASSERT_TRUE(listener.waitForMessages(1));
    bool sent = false;
    listener.socket->send(u"x"_qs, [&sent](const std::optional<SocketError>&) { sent = true; });
    server.peer->sendTextMessage(u"late"_qs);
    listener.socket.reset();
    ASSERT_TRUE(waitUntil([this] { return server.closeCode.has_value(); }));
    EXPECT_EQ(server.closeCode, 1001);
    runFor(20ms);
    EXPECT_EQ(listener.messages.size(), 1U);
    EXPECT_EQ(listener.error, std::nullopt);
    EXPECT_FALSE(sent);
}

TEST_F(MetadataSocket, TellsWhenTheServerCloses) {
    auto listener = open();
    listener.listen();
    server.peer->sendTextMessage(u"last words"_qs);
    server.peer->close(QWebSocketProtocol::CloseCodeGoingAway, u"restarting\nsoon"_qs);
    ASSERT_TRUE(listener.waitForError());
    ASSERT_EQ(listener.messages.size(), 1U) << "what came before counts";
    EXPECT_EQ(listener.error, u"The server has closed the connection (1001) restarting soon"_qs);
}

TEST_F(MetadataSocket, TellsWhenTheServerBreaksOff) {
    auto listener = open();
    listener.listen();
    server.peer->sendTextMessage(u"o"_qs);
    ASSERT_TRUE(listener.waitForMessages(1));
    server.peer->abort();
    ASSERT_TRUE(listener.waitForError());
    EXPECT_FALSE(listener.error->isEmpty());
}

TEST_F(MetadataSocket, AHandlerMayEndTheSocket) {
    auto listener = open();
    bool called = false;
    listener.socket->receive([&](const std::variant<SocketMessage, SocketError>&) {
        called = true;
        listener.socket.reset();
    });
    server.peer->sendTextMessage(u"one"_qs);
    server.peer->sendTextMessage(u"two"_qs);
    EXPECT_TRUE(waitUntil([this] { return server.closeCode.has_value(); }));
    EXPECT_TRUE(called);
}

TEST_F(MetadataSocket, ASecondReceiveFails) {
    auto listener = open();
    listener.listen();
    std::optional<QString> error;
    listener.socket->receive([&error](const std::variant<SocketMessage, SocketError>& result) {
        error = std::get<SocketError>(result).localizedDescription;
    });
    EXPECT_TRUE(waitUntil([&error] { return error.has_value(); }));
    server.peer->sendTextMessage(u"o"_qs);
    EXPECT_TRUE(listener.waitForMessages(1)) << "the first one still stands";
}

TEST_F(MetadataSocket, RefusesAnUnknownAuthority) {
    TestAuthority other;
    for (const auto& extra : {std::optional<QString>(), std::optional(other.certificateFile())}) {
        Listener listener(qtWebSockets(extra)(server.url()));
        listener.resumeAndListen();
        ASSERT_TRUE(listener.waitForError());
        EXPECT_FALSE(listener.error->isEmpty());
        EXPECT_FALSE(listener.error->contains(u'\n'));
        EXPECT_EQ(server.peer, nullptr);
    }
}

TEST_F(MetadataSocket, RefusesACertificateForAnotherName) {
    TlsWebSocketServer elsewhere(authority, u"DNS:other.example"_qs);
    Listener listener(qtWebSockets(authority.certificateFile())(elsewhere.url()));
    listener.resumeAndListen();
    ASSERT_TRUE(listener.waitForError());
    EXPECT_EQ(elsewhere.peer, nullptr);
}

TEST_F(MetadataSocket, SaysWhenTheExtraAuthorityCannotBeRead) {
    Listener listener(qtWebSockets(u"/nowhere/ca.pem"_qs)(server.url()));
    listener.resumeAndListen();
    ASSERT_TRUE(listener.waitForError());
    EXPECT_EQ(listener.error, u"No certificate could be read from /nowhere/ca.pem"_qs);
}

TEST_F(MetadataSocket, AsksNoProxy) {
    QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::HttpProxy, u"127.0.0.1"_qs, 1));
    auto listener = open();
    QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::DefaultProxy));
    listener.listen();
    server.peer->sendTextMessage(u"o"_qs);
    EXPECT_TRUE(listener.waitForMessages(1));
}

} // namespace
} // namespace zofra::test
