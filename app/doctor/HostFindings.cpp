// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/HostFindings.h"

#include "metadata/OnAirItem.h"
#include "metadata/ScraperPage.h"
#include "stations/texts/DoctorTexts.h"

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
    return probe.reason.isEmpty() ? QString() : QStringLiteral(" (") + probe.reason + u')';
}

QString inEndpoints(const HostTarget& target, AppLanguage language) {
    const auto& key = target.keys.first();
    return texts::doctor::inEndpoints.in(
        language, target.keys.size() > 1 ? texts::doctor::andOthers.in(language, key) : key);
}

Wrong wrongName(const HostTarget& target, const HostProbe& probe, AppLanguage language) {
    const QString hostName = target.host.section(u':', 0, 0);
    if (hostName.endsWith(QLatin1String(".example")))
        return {texts::doctor::placeholder.in(language), texts::doctor::setHosts.in(language)};
    if (probe.timedOut)
        return {texts::doctor::nameServerSilent.in(language), texts::doctor::checkNameServer.in(language)};
    return {texts::doctor::nameUnknown.in(language), texts::doctor::checkNameOrHost.in(language)};
}

Wrong wrongConnection(const HostProbe& probe, AppLanguage language) {
    const int error = probe.systemErrno;
    if (error == EPERM || error == EACCES)
        return {texts::doctor::refusedHere.in(language, because(probe)),
                texts::doctor::allowOutgoing.in(language)};
    if (error == ENETUNREACH || error == EHOSTUNREACH)
        return {texts::doctor::noWay.in(language, because(probe)), texts::doctor::checkCable.in(language)};
    if (probe.timedOut)
        return {texts::doctor::noConnectionInTime.in(language), texts::doctor::checkFirewall.in(language)};
    return {texts::doctor::refusesConnections.in(language), texts::doctor::serverDown.in(language)};
}

Wrong wrongCertificate(const HostTarget& target, const HostProbe& probe, AppLanguage language) {
    const auto says = [&probe](const char* words) {
        return probe.reason.contains(QLatin1String(words), Qt::CaseInsensitive);
    };
    const QString text = texts::doctor::badCertificate.in(language, because(probe));
    if (says("expired") || says("not yet valid"))
        return {text, texts::doctor::checkClock.in(language)};
    if (says("does not match") || says("no alternative certificate"))
        return {text, texts::doctor::otherHostAnswers.in(language, inEndpoints(target, language))};
    if (says("self-signed") || says("self signed") || says("unable to get"))
        return {text, texts::doctor::installAuthorities.in(language)};
    if (probe.timedOut)
        return {texts::doctor::silentTls.in(language), texts::doctor::somethingHangs.in(language)};
    return {texts::doctor::noSecureConnection.in(language, because(probe)),
            texts::doctor::tlsCutOff.in(language)};
}

std::optional<Wrong> wrongAnswer(const HostTarget& target, const HostProbe& probe, AppLanguage language) {
    const bool isStream = target.kind == HostTarget::Kind::stream;
    const auto where = inEndpoints(target, language);
    if (probe.status == 404 && isStream)
        return Wrong{texts::doctor::noStream.in(language), texts::doctor::offAir.in(language, where)};
    if (probe.status < 200 || probe.status > 299)
        return Wrong{texts::doctor::answersHttp.in(language, probe.status),
                     texts::doctor::serviceFaultCheck.in(language, where)};
    const bool isPage = probe.contentType.startsWith(QLatin1String("text/html"), Qt::CaseInsensitive);
    const bool isUsable = isStream ? !isPage
                          : target.kind == HostTarget::Kind::scraper
                              ? ScraperPage::fromBody(probe.body).has_value()
                              : onAirItems(probe.body, target.rpId).has_value();
    if (isUsable)
        return std::nullopt;
    return Wrong{(isPage ? texts::doctor::pageInstead : texts::doctor::wrongAnswer).in(language),
                 texts::doctor::logInToNetwork.in(language, where)};
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
        return Wrong{probe.timedOut ? texts::doctor::silentRequest.in(language)
                                    : texts::doctor::endsUnanswered.in(language, because(probe)),
                     texts::doctor::serviceFault.in(language)};
    case Step::done:
        break;
    }
    // Plain HTTP is not what the live feed is for.
    return target.kind == HostTarget::Kind::live ? std::nullopt : wrongAnswer(target, probe, language);
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

Finding asFinding(const HostTarget& target, const HostProbe& probe, const std::optional<Wrong>& wrong,
                  AppLanguage language) {
    const QString area = areaOf(target.kind);
    if (wrong)
        return problem(area, target.host + QStringLiteral(": ") + wrong->text, wrong->cure,
                       details(target, probe));
    return fine(area,
                texts::doctor::hostFine.in(language, target.host, QString::number(probe.answerTime.count())),
                details(target, probe));
}

} // namespace

Finding judgeHost(const HostTarget& target, const std::vector<HostProbe>& probes, AppLanguage language) {
    for (const auto& probe : probes) {
        if (const auto wrong = wrongIn(target, probe, language))
            return asFinding(target, probe, wrong, language);
    }
    const auto slowest = std::max_element(probes.begin(), probes.end(), [](const auto& a, const auto& b) {
        return a.answerTime < b.answerTime;
    });
    return slowest == probes.end()
               ? skipped(areaOf(target.kind), texts::doctor::hostNotAsked.in(language, target.host))
               : asFinding(target, *slowest, std::nullopt, language);
}

Finding judgeLiveSocket(const HostTarget& target, const HostProbe& probe, const LiveSocketOutcome& outcome,
                        AppLanguage language) {
    const auto wrong = wrongIn(target, probe, language);
    if (wrong || outcome.isOpen)
        return asFinding(target, probe, wrong, language);
    return asFinding(target, probe,
                     Wrong{outcome.reason.isEmpty()
                               ? texts::doctor::socketSilent.in(language)
                               : texts::doctor::socketRefuses.in(language, outcome.reason),
                           texts::doctor::polledMeanwhile.in(language, inEndpoints(target, language))},
                     language);
}

} // namespace zofra::doctor
