// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/ProgramFindings.h"

namespace zofra::doctor {

namespace {

QString doing(const QJsonObject& status) {
    const auto station = status.value(QLatin1String("station")).toString();
    const auto output = status.value(QLatin1String("output_title")).toString();
    if (status.value(QLatin1String("buffering")).toBool())
        return QStringLiteral("waiting for the sound of ") + station;
    if (status.value(QLatin1String("playing")).toBool())
        return QStringLiteral("playing ") + station + QStringLiteral(" (") + output + u')';
    return QStringLiteral("silent");
}

} // namespace

Finding judgeBus(const ProgramFacts& facts) {
    const QString area = QStringLiteral("bus");
    const QJsonObject details{{QStringLiteral("address"), facts.busAddress},
                              {QStringLiteral("media_player"), facts.hasMediaName}};
    if (!facts.hasBus)
        return problem(
            area,
            facts.busAddress.isEmpty() ? QStringLiteral("no session bus: DBUS_SESSION_BUS_ADDRESS is not set")
                                       : QStringLiteral("no session bus answers at ") + facts.busAddress,
            QStringLiteral(
                "log in to a desktop session, or run the program by dbus-run-session: without a bus "
                "there are no media keys, no button in the panel and no second start."),
            details);
    if (facts.isRunning && !facts.hasMediaName)
        return problem(
            area, QStringLiteral("the running program has no place among the media players"),
            QStringLiteral(
                "end it (zofrazofra --quit) and start it again; another program may hold its name."),
            details);
    return fine(area,
                facts.hasMediaName
                    ? QStringLiteral("the session bus answers; media keys reach the program")
                    : QStringLiteral("the session bus answers; media keys work once the program runs"),
                details);
}

Finding judgeProgram(const ProgramFacts& facts) {
    const QString area = QStringLiteral("program");
    QJsonObject details{{QStringLiteral("running"), facts.isRunning}};
    if (!facts.hasBus)
        return skipped(area, QStringLiteral("cannot be asked without a session bus"), details);
    if (!facts.isRunning)
        return fine(area, QStringLiteral("not running"), details);
    const auto process =
        facts.processId > 0 ? QStringLiteral(" (process %1)").arg(facts.processId) : QString();
    if (!facts.status)
        return problem(area, QStringLiteral("running, but does not answer") + process,
                       facts.processId > 0
                           ? QStringLiteral("end it: kill %1; then start it again.").arg(facts.processId)
                           : QStringLiteral("end it and start it again."),
                       details);
    details.insert(QStringLiteral("status"), *facts.status);
    const auto version = facts.status->value(QLatin1String("version")).toString();
    if (version != facts.ownVersion)
        return problem(
            area, QStringLiteral("version ") + version + QStringLiteral(" is running") + process,
            QStringLiteral("start it again, for it was updated: zofrazofra --quit, then zofrazofra."),
            details);
    if (facts.status->value(QLatin1String("network_denied")).toBool())
        return problem(
            area, QStringLiteral("running, but denied the local network") + process,
            QStringLiteral("let it send UDP to port 1900 and TCP to port 1400 (firewall, sandbox)."),
            details);
    return fine(area,
                QStringLiteral("running") + process + QStringLiteral(": ") + doing(*facts.status) +
                    QStringLiteral("; mode ") + facts.status->value(QLatin1String("tray")).toString(),
                details);
}

} // namespace zofra::doctor
