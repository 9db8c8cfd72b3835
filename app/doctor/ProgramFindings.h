// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/Finding.h"

#include <optional>

namespace zofra::doctor {

/// What the session bus says about the running program.
struct ProgramFacts {
    bool hasBus = false;
    /// Where the bus should be; empty when nothing says so.
    QString busAddress;
    bool isRunning = false;
    /// 0 when unknown.
    uint processId = 0;
    /// What it answered; absent when it did not, or not in the form of a state.
    std::optional<QJsonObject> status;
    bool hasMediaName = false;
    /// Of the program that asks.
    QString ownVersion;

    /// What it is at, of what it answered.
    [[nodiscard]] QString doing(AppLanguage language) const {
        const auto station = status->value(u"station").toString();
        const auto output = status->value(u"output_title").toString();
        if (status->value(u"buffering").toBool())
            return text::waitingForSound.in(language, station);
        if (status->value(u"playing").toBool())
            return text::playing.in(language, station, output);
        return text::silent.in(language);
    }
};

/// The session bus, on which media keys and a second start find the program.
[[nodiscard]] inline Finding judgeBus(const ProgramFacts& facts, AppLanguage language = AppLanguage::en) {
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

/// Whether one is running, and how it does.
[[nodiscard]] inline Finding judgeProgram(const ProgramFacts& facts, AppLanguage language = AppLanguage::en) {
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
    return fine(
        area,
        text::running.in(language, process, facts.doing(language), facts.status->value(u"tray").toString()),
        details);
}

} // namespace zofra::doctor
