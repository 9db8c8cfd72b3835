// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/ProgramFindings.h"

#include "stations/texts/DoctorTexts.h"

namespace zofra::doctor {

namespace {

namespace text = texts::doctor;

QString doing(const QJsonObject& status, AppLanguage language) {
    const auto station = status.value(u"station").toString();
    const auto output = status.value(u"output_title").toString();
    if (status.value(u"buffering").toBool())
        return text::waitingForSound.in(language, station);
    if (status.value(u"playing").toBool())
        return text::playing.in(language, station, output);
    return text::silent.in(language);
}

} // namespace

Finding judgeBus(const ProgramFacts& facts, AppLanguage language) {
    const QString area = u"bus"_qs;
    const QJsonObject details{{u"address"_qs, facts.busAddress}, {u"media_player"_qs, facts.hasMediaName}};
    if (!facts.hasBus)
        return problem(area,
                       facts.busAddress.isEmpty() ? text::noBusSet.in(language)
                                                  : text::noBusAnswers.in(language, facts.busAddress),
                       text::getABus.in(language), details);
    if (facts.isRunning && !facts.hasMediaName)
        return problem(area, text::noMediaPlace.in(language), text::startAgainForMedia.in(language), details);
    const auto& keys = facts.hasMediaName ? text::mediaKeysWork : text::mediaKeysLater;
    return fine(area, keys.in(language), details);
}

Finding judgeProgram(const ProgramFacts& facts, AppLanguage language) {
    const QString area = u"program"_qs;
    QJsonObject details{{u"running"_qs, facts.isRunning}};
    if (!facts.hasBus)
        return skipped(area, text::cannotBeAsked.in(language), details);
    if (!facts.isRunning)
        return fine(area, text::notRunning.in(language), details);
    const auto process = facts.processId > 0 ? text::process.in(language, facts.processId) : QString();
    if (!facts.status)
        return problem(area, text::runningButSilent.in(language, process),
                       facts.processId > 0 ? text::killIt.in(language, facts.processId)
                                           : text::endIt.in(language),
                       details);
    details.insert(u"status"_qs, *facts.status);
    const auto version = facts.status->value(u"version").toString();
    if (version != facts.ownVersion)
        return problem(area, text::otherVersion.in(language, version, process),
                       text::restartUpdated.in(language), details);
    if (facts.status->value(u"network_denied").toBool())
        return problem(area, text::networkDenied.in(language, process), text::allowPorts.in(language),
                       details);
    return fine(area,
                text::running.in(language, process, doing(*facts.status, language),
                                 facts.status->value(u"tray").toString()),
                details);
}

} // namespace zofra::doctor
