// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/HostFindings.h"

#include "metadata/OnAirItem.h"
#include "metadata/ScraperPage.h"

#include <QJsonArray>

#include <algorithm>
#include <cerrno>

namespace zofra::doctor {

namespace {

using Step = HostProbe::Step;

/// The text and the cure of what is wrong; absent when nothing is.
struct Wrong {
    QString text;
    QString cure;
};

QString stepName(Step step) {
    switch (step) {
    case Step::name:
        return QStringLiteral("name");
    case Step::connect:
        return QStringLiteral("connect");
    case Step::tls:
        return QStringLiteral("tls");
    case Step::answer:
        return QStringLiteral("answer");
    case Step::done:
        break;
    }
    return QStringLiteral("done");
}

QString because(const HostProbe& probe) {
    return probe.reason.isEmpty() ? QString() : QStringLiteral(" (") + probe.reason + u')';
}

QString inEndpoints(const HostTarget& target) {
    return target.keys.first() + (target.keys.size() > 1 ? QStringLiteral(" and others") : QString()) +
           QStringLiteral(" in endpoints.ini");
}

Wrong wrongName(const HostTarget& target, const HostProbe& probe) {
    const QString hostName = target.host.section(u':', 0, 0);
    if (hostName.endsWith(QLatin1String(".example")))
        return {QStringLiteral("is a placeholder: this host has to be set"),
                QStringLiteral("put the station group's servers into ~/.config/zofrazofra/endpoints.ini; "
                               "/etc/xdg/zofrazofra/endpoints.ini explains every key.")};
    if (probe.timedOut)
        return {QStringLiteral("the name server does not answer"),
                QStringLiteral("check the network connection and its name server (/etc/resolv.conf).")};
    return {
        QStringLiteral("the name cannot be resolved"),
        QStringLiteral("check the network connection and its name server (/etc/resolv.conf); if other names "
                       "work, the host in endpoints.ini is wrong.")};
}

Wrong wrongConnection(const HostProbe& probe) {
    const int error = probe.systemErrno;
    if (error == EPERM || error == EACCES)
        return {QStringLiteral("this computer refuses the connection") + because(probe),
                QStringLiteral("allow outgoing connections to TCP port 443 in the firewall.")};
    if (error == ENETUNREACH || error == EHOSTUNREACH)
        return {QStringLiteral("there is no way to it") + because(probe),
                QStringLiteral("check cable or Wi-Fi, and the router.")};
    if (probe.timedOut)
        return {QStringLiteral("takes no connection in time"),
                QStringLiteral("check the network connection; a firewall may drop TCP port 443.")};
    return {QStringLiteral("refuses connections"),
            QStringLiteral(
                "the server is down: try again later. If it stays so, set another host in endpoints.ini.")};
}

Wrong wrongCertificate(const HostTarget& target, const HostProbe& probe) {
    const auto says = [&probe](const char* words) {
        return probe.reason.contains(QLatin1String(words), Qt::CaseInsensitive);
    };
    const QString text = QStringLiteral("its certificate is not good") + because(probe);
    if (says("expired") || says("not yet valid"))
        return {text, QStringLiteral("check this computer's date and time; if they are right, the server's "
                                     "owner has to renew it.")};
    if (says("does not match") || says("no alternative certificate"))
        return {text, QStringLiteral("check ") + inEndpoints(target) +
                          QStringLiteral(": another host than the one you mean may answer.")};
    if (says("self-signed") || says("self signed") || says("unable to get"))
        return {
            text,
            QStringLiteral(
                "install ca-certificates; log in where the network wants that; name an authority of your own "
                "as extra_ca in endpoints.ini.")};
    if (probe.timedOut)
        return {QStringLiteral("takes the connection, then says nothing (TLS)"),
                QStringLiteral("the server or something on the way hangs: try again later.")};
    return {
        QStringLiteral("no secure connection") + because(probe),
        QStringLiteral(
            "the server or something on the way cuts TLS off: try again later, or from another network.")};
}

std::optional<Wrong> wrongAnswer(const HostTarget& target, const HostProbe& probe) {
    const bool isStream = target.kind == HostTarget::Kind::stream;
    if (probe.status == 404 && isStream)
        return Wrong{QStringLiteral("does not have the stream (HTTP 404)"),
                     QStringLiteral("the station is off the air there: try again later, or check ") +
                         inEndpoints(target) + u'.'};
    if (probe.status < 200 || probe.status > 299)
        return Wrong{QStringLiteral("answers HTTP %1").arg(probe.status),
                     QStringLiteral("the service has a fault: try again later. If it stays so, check ") +
                         inEndpoints(target) + u'.'};
    const bool isPage = probe.contentType.startsWith(QLatin1String("text/html"), Qt::CaseInsensitive);
    const bool isUsable = isStream ? !isPage
                          : target.kind == HostTarget::Kind::scraper
                              ? ScraperPage::fromBody(probe.body).has_value()
                              : onAirItems(probe.body, target.rpId).has_value();
    if (isUsable)
        return std::nullopt;
    return Wrong{
        isPage ? QStringLiteral("a web page answers in its place")
               : QStringLiteral("answers, but not what it should"),
        QStringLiteral("log in where the network wants that (open any page in a browser), or check ") +
            inEndpoints(target) + u'.'};
}

std::optional<Wrong> wrongIn(const HostTarget& target, const HostProbe& probe) {
    switch (probe.failedAt) {
    case Step::name:
        return wrongName(target, probe);
    case Step::connect:
        return wrongConnection(probe);
    case Step::tls:
        return wrongCertificate(target, probe);
    case Step::answer:
        return Wrong{probe.timedOut
                         ? QStringLiteral("takes the request, then says nothing")
                         : QStringLiteral("ends the connection without an answer") + because(probe),
                     QStringLiteral("the service has a fault: try again later.")};
    case Step::done:
        break;
    }
    // Plain HTTP is not what the live feed is for.
    return target.kind == HostTarget::Kind::live ? std::nullopt : wrongAnswer(target, probe);
}

QJsonObject details(const HostTarget& target, const HostProbe& probe) {
    const auto number = [](std::chrono::milliseconds time) { return static_cast<qint64>(time.count()); };
    return {{QStringLiteral("host"), target.host},
            {QStringLiteral("keys"), QJsonArray::fromStringList(target.keys)},
            {QStringLiteral("address"), probe.address},
            {QStringLiteral("failed_at"),
             probe.failedAt == Step::done ? QJsonValue() : QJsonValue(stepName(probe.failedAt))},
            {QStringLiteral("status"), probe.status},
            {QStringLiteral("ms"), QJsonObject{{QStringLiteral("name"), number(probe.nameTime)},
                                               {QStringLiteral("connect"), number(probe.connectTime)},
                                               {QStringLiteral("tls"), number(probe.tlsTime)},
                                               {QStringLiteral("answer"), number(probe.answerTime)}}}};
}

Finding asFinding(const HostTarget& target, const HostProbe& probe, const std::optional<Wrong>& wrong) {
    const QString area = areaOf(target.kind);
    if (wrong)
        return problem(area, target.host + QStringLiteral(": ") + wrong->text, wrong->cure,
                       details(target, probe));
    return fine(area,
                target.host + QStringLiteral(": name, TLS, answer in %1 ms").arg(probe.answerTime.count()),
                details(target, probe));
}

} // namespace

Finding judgeHost(const HostTarget& target, const std::vector<HostProbe>& probes) {
    for (const auto& probe : probes) {
        if (const auto wrong = wrongIn(target, probe))
            return asFinding(target, probe, wrong);
    }
    const auto slowest = std::max_element(probes.begin(), probes.end(), [](const auto& a, const auto& b) {
        return a.answerTime < b.answerTime;
    });
    return slowest == probes.end() ? skipped(areaOf(target.kind), target.host + QStringLiteral(": not asked"))
                                   : asFinding(target, *slowest, std::nullopt);
}

Finding judgeLiveSocket(const HostTarget& target, const HostProbe& probe, const LiveSocketOutcome& outcome) {
    if (const auto wrong = wrongIn(target, probe))
        return asFinding(target, probe, wrong);
    if (outcome.isOpen)
        return asFinding(target, probe, std::nullopt);
    const QString why = outcome.reason.isEmpty() ? QStringLiteral("the socket service says nothing")
                                                 : QStringLiteral("the socket service does not let us in (") +
                                                       outcome.reason + u')';
    return asFinding(
        target, probe,
        Wrong{
            why,
            QStringLiteral(
                "song texts come from the on-air service meanwhile, every 15 s; try again later, or check ") +
                inEndpoints(target) + u'.'});
}

} // namespace zofra::doctor
