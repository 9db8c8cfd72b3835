// SPDX-License-Identifier: GPL-3.0-or-later
// Networks that refuse the connection attempt itself. Each test starts this program once more, inside a
// network namespace of its own where routes are as the test wants them.
#include "tests/platform/net/HttpHarness.h"
#include "tests/platform/net/NamespaceRun.h"

#include <QTemporaryFile>

#include <cerrno>

namespace zofra::test {
namespace {

using Code = HttpError::Code;

void expectFailure(const QString& url, Code code, int systemErrno) {
    CurlHttpSession session;
    const auto result = fetch(session, url);
    ASSERT_FALSE(result) << url.toStdString();
    EXPECT_EQ(result.error().code, code) << result.error().localizedDescription.toStdString();
    EXPECT_EQ(result.error().systemErrno, systemErrno) << result.error().localizedDescription.toStdString();
}

TEST(NamespaceTest, DISABLED_NoRouteAtAll) {
    expectFailure(u"http://192.168.77.5:1400/x"_qs, Code::notConnected, ENETUNREACH);
    expectFailure(u"http://127.0.0.1:1400/x"_qs, Code::notConnected, ENETUNREACH);
}
TEST(NamespaceTest, DISABLED_ProhibitedRoute) {
    expectFailure(u"http://192.168.77.5:1400/x"_qs, Code::notConnected, EACCES);
}
TEST(NamespaceTest, DISABLED_UnreachableHost) {
    expectFailure(u"http://192.168.77.5:1400/x"_qs, Code::cannotConnect, EHOSTUNREACH);
}
TEST(NamespaceTest, DISABLED_RejectedByTheFirewall) {
    expectFailure(u"http://127.0.0.1:1400/x"_qs, Code::cannotConnect, ECONNREFUSED);
}
TEST(NamespaceTest, DISABLED_SilentNameServer) {
    // The name server swallows every question; the request for the address must not wait for it, nor must the
    // end.
    CurlHttpSession session;
    auto request = requestFor(u"http://radio.example/"_qs);
    request.timeout = 500ms;
    Pending lookup(session, request);
    LoopbackServer server(serving([](const QByteArray&) { return response(200, "x"); }));
    EXPECT_TRUE(fetch(session, server.url(u"/"_qs)));
    EXPECT_EQ(codeOf(lookup.get()), Code::timedOut);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(fetch(session, server.url(u"/"_qs)));
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2s) << "the session went on at once";
}

TEST(CurlRoutesTest, NoRouteAtAllMeansNotConnected) {
    runInNamespace(u"NoRouteAtAll"_qs, u"true"_qs);
}
TEST(CurlRoutesTest, AProhibitedRouteMeansNotConnected) {
    runInNamespace(u"ProhibitedRoute"_qs, u"ip link set lo up && ip route add prohibit 192.168.77.0/24"_qs);
}
TEST(CurlRoutesTest, AnUnreachableHostMeansCannotConnect) {
    runInNamespace(u"UnreachableHost"_qs,
                   u"ip link set lo up && ip route add unreachable 192.168.77.0/24"_qs);
}
TEST(CurlRoutesTest, ARefusalMeansCannotConnect) {
    runInNamespace(u"RejectedByTheFirewall"_qs, u"ip link set lo up"_qs);
}
TEST(CurlRoutesTest, ASilentNameServerHoldsUpNobody) {
    QTemporaryFile resolver;
    ASSERT_TRUE(resolver.open());
    resolver.write("nameserver 192.0.2.53\n");
    resolver.close();
    runInNamespace(
        u"SilentNameServer"_qs,
        u"mount --bind "_qs + resolver.fileName() +
            u" /etc/resolv.conf && ip link set lo up && ip link add zofra0 type veth peer name zofra1 && "
            u"ip addr add 192.0.2.1/24 dev zofra0 && ip link set zofra0 up && ip link set zofra1 up && "
            u"ip neigh add 192.0.2.53 lladdr 02:00:00:00:00:01 dev zofra0"_qs);
}

} // namespace
} // namespace zofra::test
