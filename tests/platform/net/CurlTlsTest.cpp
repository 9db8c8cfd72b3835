// SPDX-License-Identifier: GPL-3.0-or-later
// Whom the session trusts.
#include "platform/linux/net/TrustedAuthorities.h"
#include "tests/platform/net/HttpHarness.h"

#include <QTemporaryFile>

namespace zofra::test {
namespace {

using Code = HttpError::Code;

class CurlTlsTest : public testing::Test {
protected:
    static LoopbackServer::Handler hello() {
        return serving([](const QByteArray&) { return response(200, "hello"); });
    }
    TestAuthority authority;
};

TEST_F(CurlTlsTest, TrustsTheExtraAuthority) {
    LoopbackServer server(hello(), authority.identityFor(u"IP:127.0.0.1"_qs));
    CurlHttpSession session(authority.certificateFile());
    const auto result = fetch(session, server.url(u"/"_qs, u"https"_qs));
    ASSERT_TRUE(result) << result.error().localizedDescription.toStdString();
    EXPECT_EQ(result->body, "hello");
}

TEST_F(CurlTlsTest, RefusesAnUnknownAuthority) {
    LoopbackServer server(hello(), authority.identityFor(u"IP:127.0.0.1"_qs));
    TestAuthority other;
    for (const auto& extra : {std::optional<QString>(), std::optional(other.certificateFile())}) {
        CurlHttpSession session(extra);
        EXPECT_EQ(codeOf(fetch(session, server.url(u"/"_qs, u"https"_qs))), Code::secureConnectionFailed);
    }
}

TEST_F(CurlTlsTest, RefusesACertificateForAnotherName) {
    LoopbackServer server(hello(), authority.identityFor(u"DNS:other.example,IP:127.0.0.2"_qs));
    CurlHttpSession session(authority.certificateFile());
    EXPECT_EQ(codeOf(fetch(session, server.url(u"/"_qs, u"https"_qs))), Code::secureConnectionFailed);
}

TEST_F(CurlTlsTest, SaysWhenTheExtraAuthorityCannotBeRead) {
    LoopbackServer server(hello(), authority.identityFor(u"IP:127.0.0.1"_qs));
    CurlHttpSession session(u"/nowhere/ca.pem"_qs);
    const auto result = fetch(session, server.url(u"/"_qs, u"https"_qs));
    EXPECT_EQ(codeOf(result), Code::secureConnectionFailed);
    EXPECT_TRUE(result.error().localizedDescription.contains(u"/nowhere/ca.pem"_qs))
        << result.error().localizedDescription.toStdString();
}

TEST_F(CurlTlsTest, PlainHttpNeedsNoAuthority) {
    LoopbackServer server(hello());
    CurlHttpSession session(u"/nowhere/ca.pem"_qs);
    EXPECT_TRUE(fetch(session, server.url(u"/"_qs)));
}

TEST_F(CurlTlsTest, RefusesAServerThatDoesNotSpeakTls) {
    LoopbackServer server([](ServerConnection& connection) {
        connection.read(1);
        connection.write("HTTP/1.1 400 Bad Request\r\n\r\n");
    });
    CurlHttpSession session;
    EXPECT_EQ(codeOf(fetch(session, server.url(u"/"_qs, u"https"_qs))), Code::secureConnectionFailed);
}

TEST(TrustedAuthoritiesTest, TakesTheSystemsDirectoryWhereThereIsOne) {
    const auto found = TrustedAuthorities::find(std::nullopt);
    if (!found.directory)
        GTEST_SKIP() << "skipped: no directory of authorities on this system";
    EXPECT_EQ(found.file, std::nullopt);
    EXPECT_EQ(found.pem, std::nullopt);
    const auto withExtra = TrustedAuthorities::find(u"/some/ca.pem"_qs);
    EXPECT_EQ(withExtra.directory, found.directory);
    EXPECT_EQ(withExtra.file, QByteArray("/some/ca.pem"));
}

} // namespace
} // namespace zofra::test
