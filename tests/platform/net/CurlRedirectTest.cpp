// SPDX-License-Identifier: GPL-3.0-or-later
// How far redirects are followed.
#include "tests/platform/net/HttpHarness.h"

namespace zofra::test {
namespace {

/// "/N" leads to "/N-1", and "/0" is the goal.
LoopbackServer::Handler countdown() {
    return serving([](const QByteArray& head) {
        const int left = head.mid(5, head.indexOf(' ', 5) - 5).toInt();
        return left == 0 ? response(200, "goal") : redirect(u"/"_qs + QString::number(left - 1));
    });
}

TEST(CurlRedirectTest, FollowsFive) {
    LoopbackServer server(countdown());
    CurlHttpSession session;
    const auto result = fetch(session, server.url(u"/5"_qs));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 200);
    EXPECT_EQ(result->body, "goal");
}

TEST(CurlRedirectTest, DoesNotFollowSix) {
    LoopbackServer server(countdown());
    CurlHttpSession session;
    const auto result = fetch(session, server.url(u"/6"_qs));
    EXPECT_FALSE(result);
    EXPECT_EQ(codeOf(result), HttpError::Code::tooManyRedirects);
}

TEST(CurlRedirectTest, EndsALoop) {
    LoopbackServer server(serving([](const QByteArray&) { return redirect(u"/again"_qs); }));
    CurlHttpSession session;
    EXPECT_EQ(codeOf(fetch(session, server.url(u"/"_qs))), HttpError::Code::tooManyRedirects);
}

class ForeignRedirectTest : public testing::TestWithParam<const char*> {};

TEST_P(ForeignRedirectTest, IsNotFollowed) {
    LoopbackServer server(
        serving([](const QByteArray&) { return redirect(QString::fromLatin1(GetParam())); }));
    CurlHttpSession session;
    const auto result = fetch(session, server.url(u"/"_qs));
    EXPECT_FALSE(result);
    EXPECT_EQ(codeOf(result), HttpError::Code::unsupportedUrl)
        << result.error().localizedDescription.toStdString();
}

INSTANTIATE_TEST_SUITE_P(Schemes, ForeignRedirectTest,
                         testing::Values("file:///etc/passwd", "ftp://127.0.0.1/", "gopher://127.0.0.1:1/",
                                         "dict://127.0.0.1:1/", "ldap://127.0.0.1/", "smb://127.0.0.1/x",
                                         "tftp://127.0.0.1/x"));

class SecureRedirectTest : public testing::Test {
protected:
    TestAuthority authority;
    TlsIdentity identity = authority.identityFor(u"IP:127.0.0.1"_qs);
    CurlHttpSession session{authority.certificateFile()};
    LoopbackServer plain{serving([this](const QByteArray& head) {
        return head.startsWith("GET /up") ? redirect(upGoal) : response(200, "plain");
    })};
    LoopbackServer secure{serving([this](const QByteArray& head) {
                              return head.startsWith("GET /down") ? redirect(plain.url(u"/goal"_qs))
                                                                  : response(200, "secure");
                          }),
                          identity};
    QString upGoal;
};

TEST_F(SecureRedirectTest, GoesFromHttpToHttps) {
    upGoal = secure.url(u"/goal"_qs, u"https"_qs);
    const auto result = fetch(session, plain.url(u"/up"_qs));
    ASSERT_TRUE(result) << result.error().localizedDescription.toStdString();
    EXPECT_EQ(result->body, "secure");
}

TEST_F(SecureRedirectTest, NeverGoesFromHttpsToHttp) {
    const auto result = fetch(session, secure.url(u"/down"_qs, u"https"_qs));
    EXPECT_FALSE(result);
    EXPECT_EQ(codeOf(result), HttpError::Code::unsupportedUrl);
    EXPECT_EQ(plain.accepted(), 0);
}

TEST_F(SecureRedirectTest, NeverGoesDownAgainAfterGoingUp) {
    upGoal = secure.url(u"/down"_qs, u"https"_qs);
    const auto result = fetch(session, plain.url(u"/up"_qs));
    EXPECT_FALSE(result);
    EXPECT_EQ(codeOf(result), HttpError::Code::unsupportedUrl);
    EXPECT_EQ(result.error().localizedDescription,
              u"A redirect leads from a secure address to an insecure one."_qs);
}

} // namespace
} // namespace zofra::test
