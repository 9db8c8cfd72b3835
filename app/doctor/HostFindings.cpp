// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/HostFindings.h"

#include <QJsonArray>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>

namespace zofra::doctor {

namespace {

using Step = HostProbe::Step;

/// The text and the cure of what is wrong; absent when nothing is.
struct Wrong {
    QString text;
    QString cure;
};

QString stepName(Step step) {
    static constexpr std::array names{"name", "connect", "tls", "answer", "done"};
    return QString::fromLatin1(names.at(static_cast<std::size_t>(step)));
}

QString because(const HostProbe& probe) {
    return probe.reason.isEmpty() ? QString() : u" ("_qs + probe.reason + u')';
}

QString inEndpoints(const HostTarget& target, AppLanguage language) {
    const auto& key = target.keys.first();
    return text::inEndpoints.in(language, target.keys.size() > 1 ? text::andOthers.in(language, key) : key);
}

Wrong wrongName(const HostTarget& target, const HostProbe& probe, AppLanguage language) {
    const QString hostName = target.host.section(u':', 0, 0);
    if (hostName.endsWith(u".example"))
        return {text::placeholder.in(language), text::setHosts.in(language)};
    if (probe.timedOut)
        return {text::nameServerSilent.in(language), text::checkNameServer.in(language)};
    return {text::nameUnknown.in(language), text::checkNameOrHost.in(language)};
}

Wrong wrongConnection(const HostProbe& probe, AppLanguage language) {
    const int error = probe.systemErrno;
    if (error == EPERM || error == EACCES)
        return {text::refusedHere.in(language, because(probe)), text::allowOutgoing.in(language)};
    if (error == ENETUNREACH || error == EHOSTUNREACH)
        return {text::noWay.in(language, because(probe)), text::checkCable.in(language)};
    if (probe.timedOut)
        return {text::noConnectionInTime.in(language), text::checkFirewall.in(language)};
    return {text::refusesConnections.in(language), text::serverDown.in(language)};
}

Wrong wrongCertificate(const HostTarget& target, const HostProbe& probe, AppLanguage language) {
    const auto says = [&probe](const char* words) {
        return probe.reason.contains(QLatin1String(words), Qt::CaseInsensitive);
    };
    const QString text = text::badCertificate.in(language, because(probe));
    if (says("expired") || says("not yet valid"))
        return {text, text::checkClock.in(language)};
    if (says("does not match") || says("no alternative certificate"))
        return {text, text::otherHostAnswers.in(language, inEndpoints(target, language))};
    if (says("self-signed") || says("self signed") || says("unable to get"))
        return {text, text::installAuthorities.in(language)};
    if (probe.timedOut)
        return {text::silentTls.in(language), text::somethingHangs.in(language)};
    return {text::noSecureConnection.in(language, because(probe)), text::tlsCutOff.in(language)};
}

std::optional<Wrong> wrongAnswer(const HostTarget& target, const HostProbe& probe, AppLanguage language) {
    const bool isStream = target.kind == HostTarget::Kind::stream;
    const auto where = inEndpoints(target, language);
    if (probe.status == 404 && isStream)
        return Wrong{text::noStream.in(language), text::offAir.in(language, where)};
    if (probe.status < 200 || probe.status > 299)
        return Wrong{text::answersHttp.in(language, probe.status),
                     text::serviceFaultCheck.in(language, where)};
    const bool isPage = probe.contentType.startsWith(u"text/html", Qt::CaseInsensitive);
    const bool isUsable = isStream ? !isPage
                          : target.kind == HostTarget::Kind::scraper
                              ? ScraperPage::fromBody(probe.body).has_value()
                              : onAirItems(probe.body, target.rpId).has_value();
    if (isUsable)
        return std::nullopt;
    return Wrong{(isPage ? text::pageInstead : text::wrongAnswer).in(language),
                 text::logInToNetwork.in(language, where)};
}

std::optional<Wrong> wrongIn(const HostTarget& target, const HostProbe& probe, AppLanguage language) {
    switch (probe.failedAt) {
    case Step::name:
        return wrongName(target, probe, language);
    case Step::connect:
        return wrongConnection(probe, language);
    case Step::tls:
        return wrongCertificate(target, probe, language);
    case Step::answer:
        return Wrong{probe.timedOut ? text::silentRequest.in(language)
                                    : text::endsUnanswered.in(language, because(probe)),
                     text::serviceFault.in(language)};
    case Step::done:
        break;
    }
    // Plain HTTP is not what the live feed is for.
    return target.kind == HostTarget::Kind::live ? std::nullopt : wrongAnswer(target, probe, language);
}

QJsonObject details(const HostTarget& target, const HostProbe& probe) {
    const auto number = [](std::chrono::milliseconds time) { return static_cast<qint64>(time.count()); };
    return {
        {u"host"_qs, target.host},
        {u"keys"_qs, QJsonArray::fromStringList(target.keys)},
        {u"address"_qs, probe.address},
        {u"failed_at"_qs, probe.failedAt == Step::done ? QJsonValue() : QJsonValue(stepName(probe.failedAt))},
        {u"status"_qs, probe.status},
        {u"ms"_qs, QJsonObject{{u"name"_qs, number(probe.nameTime)},
                               {u"connect"_qs, number(probe.connectTime)},
                               {u"tls"_qs, number(probe.tlsTime)},
                               {u"answer"_qs, number(probe.answerTime)}}}};
}

Finding asFinding(const HostTarget& target, const HostProbe& probe, const std::optional<Wrong>& wrong,
                  AppLanguage language) {
    const QString area = target.area();
    if (wrong)
        return problem(area, target.host + u": "_qs + wrong->text, wrong->cure, details(target, probe));
    return fine(area, text::hostFine.in(language, target.host, QString::number(probe.answerTime.count())),
                details(target, probe));
}

} // namespace

Finding judgeHost(const HostTarget& target, const std::vector<HostProbe>& probes, AppLanguage language) {
    for (const auto& probe : probes) {
        if (const auto wrong = wrongIn(target, probe, language))
            return asFinding(target, probe, wrong, language);
    }
    const auto slowest = std::ranges::max_element(probes, {}, &HostProbe::answerTime);
    return slowest == probes.end() ? skipped(target.area(), text::hostNotAsked.in(language, target.host))
                                   : asFinding(target, *slowest, std::nullopt, language);
}

Finding judgeLiveSocket(const HostTarget& target, const HostProbe& probe, const LiveSocketOutcome& outcome,
                        AppLanguage language) {
    const auto wrong = wrongIn(target, probe, language);
    if (wrong || outcome.isOpen)
        return asFinding(target, probe, wrong, language);
    return asFinding(target, probe,
                     Wrong{outcome.reason.isEmpty() ? text::socketSilent.in(language)
                                                    : text::socketRefuses.in(language, outcome.reason),
                           text::polledMeanwhile.in(language, inEndpoints(target, language))},
                     language);
}

} // namespace zofra::doctor
