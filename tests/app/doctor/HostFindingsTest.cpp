// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/HostFindings.h"

#include "tests/support/PrintQt.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace zofra::doctor {
namespace {

using namespace std::chrono_literals;
using Step = HostProbe::Step;

HostTarget target(HostTarget::Kind kind, const QString& host = u"radio.test"_qs) {
    return {kind, host, {u"joe_aac"_qs}, {QUrl(u"https://"_qs + host + u"/x"_qs)}, u"12"_qs};
}

HostProbe failed(Step step, const QString& reason = {}) {
    HostProbe probe;
    probe.failedAt = step;
    probe.reason = reason;
    return probe;
}

HostProbe answered(int status, const QByteArray& body = "x", const QString& contentType = u"audio/aac"_qs) {
    HostProbe probe;
    probe.status = status;
    probe.body = body;
    probe.contentType = contentType;
    probe.answerTime = 20ms;
    return probe;
}

Finding stream(const HostProbe& probe, const QString& host = u"radio.test"_qs) {
    return judgeHost(target(HostTarget::Kind::stream, host), {probe});
}

TEST(HostFindingsTest, ThatAnswersIsFine) {
    const auto finding = stream(answered(200));
    EXPECT_EQ(finding.verdict, Verdict::ok);
    EXPECT_EQ(finding.text, u"radio.test: name, TLS, answer in 20 ms"_qs);
    EXPECT_EQ(finding.details.value(u"failed_at"_qs), QJsonValue());
}

TEST(HostFindingsTest, IsAsGoodAsItsWorstAnswerAndAsQuickAsItsSlowest) {
    auto slow = answered(200);
    slow.answerTime = 300ms;
    const auto all = target(HostTarget::Kind::stream);
    EXPECT_TRUE(judgeHost(all, {answered(200), slow, answered(200)}).text.endsWith(u"300 ms"_qs));
    EXPECT_EQ(judgeHost(all, {answered(200), answered(404)}).verdict, Verdict::problem);
    EXPECT_EQ(judgeHost(all, {}).verdict, Verdict::skipped);
}

TEST(HostFindingsTest, NamesTheStepThatFails) {
    EXPECT_TRUE(stream(failed(Step::name)).text.contains(u"cannot be resolved"_qs));
    EXPECT_TRUE(stream(failed(Step::name)).cure.contains(u"resolv.conf"_qs));
    auto silent = failed(Step::name);
    silent.timedOut = true;
    EXPECT_TRUE(stream(silent).text.contains(u"name server does not answer"_qs));
    EXPECT_TRUE(
        stream(failed(Step::name), u"streams.zofra.example:8443"_qs).text.contains(u"placeholder"_qs));

    auto connect = failed(Step::connect);
    EXPECT_TRUE(stream(connect).text.contains(u"refuses connections"_qs));
    connect.systemErrno = EPERM;
    EXPECT_TRUE(stream(connect).cure.contains(u"firewall"_qs));
    connect.systemErrno = ENETUNREACH;
    EXPECT_TRUE(stream(connect).cure.contains(u"router"_qs));
    connect.systemErrno = 0;
    connect.timedOut = true;
    EXPECT_TRUE(stream(connect).text.contains(u"in time"_qs));

    EXPECT_TRUE(stream(failed(Step::answer)).text.contains(u"without an answer"_qs));
    for (const auto step : {Step::name, Step::connect, Step::tls, Step::answer})
        EXPECT_FALSE(stream(failed(step)).details.value(u"failed_at"_qs).toString().isEmpty());
}

TEST(HostFindingsTest, KnowsWhatIsWrongWithACertificate) {
    const auto cureFor = [](const char* reason) {
        return stream(failed(Step::tls, QString::fromUtf8(reason))).cure;
    };
    EXPECT_TRUE(cureFor("SSL certificate problem: certificate has expired").contains(u"date"_qs));
    EXPECT_TRUE(cureFor("SSL certificate problem: certificate is not yet valid").contains(u"date"_qs));
    EXPECT_TRUE(cureFor("SSL: no alternative certificate subject name matches target host name 'x'")
                    .contains(u"another host"_qs));
    EXPECT_TRUE(cureFor("SSL certificate problem: self-signed certificate").contains(u"extra_ca"_qs));
    EXPECT_TRUE(cureFor("SSL certificate problem: unable to get local issuer certificate")
                    .contains(u"ca-certificates"_qs));
    EXPECT_TRUE(cureFor("OpenSSL/3.0: error:0A000126").contains(u"cuts TLS off"_qs));
    auto hanging = failed(Step::tls, u"Connection timed out"_qs);
    hanging.timedOut = true;
    EXPECT_TRUE(stream(hanging).text.contains(u"says nothing"_qs));
}

TEST(HostFindingsTest, KnowsAWrongAnswer) {
    EXPECT_TRUE(stream(answered(404)).text.contains(u"404"_qs));
    EXPECT_TRUE(stream(answered(404)).cure.contains(u"joe_aac"_qs));
    EXPECT_TRUE(stream(answered(503)).text.contains(u"503"_qs));
    EXPECT_TRUE(
        stream(answered(200, "<html>", u"Text/HTML; charset=utf-8"_qs)).text.contains(u"web page"_qs));
    EXPECT_EQ(stream(answered(200, "x", {})).verdict, Verdict::ok) << "old servers name no type";
}

TEST(HostFindingsTest, ReadsWhatTheTextServicesSay) {
    const auto onAir = target(HostTarget::Kind::onAir);
    const QByteArray good = R"({"responseStatus":"SUCCESS","results":{"12":[]}})";
    EXPECT_EQ(judgeHost(onAir, {answered(200, good, u"application/json"_qs)}).verdict, Verdict::ok);
    EXPECT_EQ(judgeHost(onAir, {answered(200, "nonsense", u"application/json"_qs)}).verdict,
              Verdict::problem);
    const auto scraper = target(HostTarget::Kind::scraper);
    EXPECT_EQ(judgeHost(scraper, {answered(200, "{\"title\":\"a\"}", u"text/html"_qs)}).verdict, Verdict::ok);
    EXPECT_EQ(judgeHost(scraper, {answered(200, "\xFF\xFE", u"text/html"_qs)}).verdict, Verdict::problem);
}

TEST(HostFindingsTest, JudgesTheLiveFeedByItsSocket) {
    const auto live = target(HostTarget::Kind::live);
    const auto refusedPlainHttp = answered(400);
    EXPECT_EQ(judgeLiveSocket(live, refusedPlainHttp, {true, {}}).verdict, Verdict::ok);
    EXPECT_TRUE(judgeLiveSocket(live, refusedPlainHttp, {false, {}}).text.contains(u"says nothing"_qs));
    EXPECT_TRUE(
        judgeLiveSocket(live, refusedPlainHttp, {false, u"HTTP 404"_qs}).text.contains(u"HTTP 404"_qs));
    EXPECT_TRUE(judgeLiveSocket(live, failed(Step::connect), {true, {}}).text.contains(u"refuses"_qs));
}

} // namespace
} // namespace zofra::doctor
