// SPDX-License-Identifier: GPL-3.0-or-later
// An extra authority is trusted beside the system's, not instead of them. The system's are replaced by one of
// the test's own, in a mount namespace.
#include "tests/platform/net/HttpHarness.h"
#include "tests/platform/net/NamespaceRun.h"
#include "tests/platform/net/SocketHarness.h"
#include "tests/support/ChildProcess.h"

#include <QFile>
#include <QTemporaryDir>

namespace zofra::test {
namespace {

constexpr const char* systemFolder = "/etc/ssl/certs";

/// Two servers, one vouched for by the system, the other by the extra file.
struct Servers {
    TestAuthority system;
    TestAuthority extra;
    LoopbackServer ofSystem;
    LoopbackServer ofExtra;

    explicit Servers(const LoopbackServer::Handler& handler)
        : ofSystem(handler, system.identityFor(u"IP:127.0.0.1"_qs))
        , ofExtra(handler, extra.identityFor(u"IP:127.0.0.1"_qs)) {
        const auto folder = QString::fromLatin1(systemFolder);
        EXPECT_TRUE(QFile::copy(system.certificateFile(), folder + u"/own.pem"_qs));
        EXPECT_EQ(runProgram(u"openssl"_qs, {u"rehash"_qs, folder}), 0);
    }
};

TEST(NamespaceTest, DISABLED_HttpTrustsBoth) {
    Servers servers(serving([](const QByteArray&) { return response(200, "x"); }));
    const auto trusts = [](CurlHttpSession& session, const LoopbackServer& server) {
        return fetch(session, server.url(u"/"_qs, u"https"_qs)).has_value();
    };
    CurlHttpSession plain;
    EXPECT_TRUE(trusts(plain, servers.ofSystem));
    EXPECT_FALSE(trusts(plain, servers.ofExtra));
    CurlHttpSession withExtra(servers.extra.certificateFile());
    EXPECT_TRUE(trusts(withExtra, servers.ofSystem));
    EXPECT_TRUE(trusts(withExtra, servers.ofExtra));
}

TEST(NamespaceTest, DISABLED_SocketTrustsBoth) {
    Servers servers([](ServerConnection& connection) {
        connection.write(upgradeAnswer(connection) + serverFrame(1, "o"));
        connection.waitForPeerToClose();
    });
    const auto trusts = [](const std::optional<QString>& extra, const LoopbackServer& server) {
        Listener listener(TestSocket(QUrl(server.url(u"/"_qs, u"wss"_qs)), extra));
        listener.resumeAndListen();
        return listener.waitForMessages(1);
    };
    EXPECT_TRUE(trusts(std::nullopt, servers.ofSystem));
    EXPECT_FALSE(trusts(std::nullopt, servers.ofExtra));
    EXPECT_TRUE(trusts(servers.extra.certificateFile(), servers.ofSystem));
    EXPECT_TRUE(trusts(servers.extra.certificateFile(), servers.ofExtra));
}

class SystemAuthoritiesTest : public testing::TestWithParam<const char*> {};

TEST_P(SystemAuthoritiesTest, StillCountBesideAnExtraOne) {
    if (!QFile::exists(QString::fromLatin1(systemFolder)))
        GTEST_SKIP() << "skipped: " << systemFolder << " is missing";
    const QTemporaryDir folder;
    runInNamespace(QString::fromLatin1(GetParam()), u"ip link set lo up && mount --bind "_qs + folder.path() +
                                                        u' ' + QString::fromLatin1(systemFolder));
}

INSTANTIATE_TEST_SUITE_P(Users, SystemAuthoritiesTest, testing::Values("HttpTrustsBoth", "SocketTrustsBoth"));

} // namespace
} // namespace zofra::test
