// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/ProgramFindings.h"

#include "stations/texts/DoctorTexts.h"

namespace zofra::doctor {

namespace {

QString doing(const QJsonObject& status, AppLanguage language) {
    const auto station = status.value(QLatin1String("station")).toString();
    const auto output = status.value(QLatin1String("output_title")).toString();
    if (status.value(QLatin1String("buffering")).toBool())
        return texts::doctor::waitingForSound.in(language, station);
    if (status.value(QLatin1String("playing")).toBool())
        return texts::doctor::playing.in(language, station, output);
    return texts::doctor::silent.in(language);
}

} // namespace

Finding judgeBus(const ProgramFacts& facts, AppLanguage language) {
    const QString area = QStringLiteral("bus");
    const QJsonObject details{{QStringLiteral("address"), facts.busAddress},
                              {QStringLiteral("media_player"), facts.hasMediaName}};
    if (!facts.hasBus)
        return problem(area,
                       facts.busAddress.isEmpty()
                           ? texts::doctor::noBusSet.in(language)
                           : texts::doctor::noBusAnswers.in(language, facts.busAddress),
                       texts::doctor::getABus.in(language), details);
    if (facts.isRunning && !facts.hasMediaName)
        return problem(area, texts::doctor::noMediaPlace.in(language),
                       texts::doctor::startAgainForMedia.in(language), details);
    const auto& keys = facts.hasMediaName ? texts::doctor::mediaKeysWork : texts::doctor::mediaKeysLater;
    return fine(area, keys.in(language), details);
}

Finding judgeProgram(const ProgramFacts& facts, AppLanguage language) {
    const QString area = QStringLiteral("program");
    QJsonObject details{{QStringLiteral("running"), facts.isRunning}};
    if (!facts.hasBus)
        return skipped(area, texts::doctor::cannotBeAsked.in(language), details);
    if (!facts.isRunning)
        return fine(area, texts::doctor::notRunning.in(language), details);
    const auto process =
        facts.processId > 0 ? texts::doctor::process.in(language, facts.processId) : QString();
    if (!facts.status)
        return problem(area, texts::doctor::runningButSilent.in(language, process),
                       facts.processId > 0 ? texts::doctor::killIt.in(language, facts.processId)
                                           : texts::doctor::endIt.in(language),
                       details);
    details.insert(QStringLiteral("status"), *facts.status);
    const auto version = facts.status->value(QLatin1String("version")).toString();
    if (version != facts.ownVersion)
        return problem(area, texts::doctor::otherVersion.in(language, version, process),
                       texts::doctor::restartUpdated.in(language), details);
    if (facts.status->value(QLatin1String("network_denied")).toBool())
        return problem(area, texts::doctor::networkDenied.in(language, process),
                       texts::doctor::allowPorts.in(language), details);
    return fine(area,
                texts::doctor::running.in(language, process, doing(*facts.status, language),
                                          facts.status->value(QLatin1String("tray")).toString()),
                details);
}

} // namespace zofra::doctor
