// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ChangeLines.h"

#include "app/VolumePercent.h"
#include "platform/ForeignText.h"

#include <array>

namespace zofra {

namespace {

QString state(const StatusReport& report) {
    if (!report.playing)
        return QStringLiteral("stopped");
    return report.buffering ? QStringLiteral("buffering") : QStringLiteral("playing");
}

QString rooms(const StatusReport& report) {
    if (report.rooms.empty())
        return QStringLiteral("0");
    QStringList titles;
    for (const auto& room : report.rooms)
        titles.append(visibleText(room.title));
    return QStringLiteral("%1 (%2)").arg(titles.size()).arg(titles.join(QStringLiteral(", ")));
}

/// What is told, in its order: name and value. What a new listener need not be told is empty.
std::array<std::pair<QString, QString>, 8> values(const StatusReport& report) {
    return {{{QStringLiteral("station"), report.station.displayName()},
             {QStringLiteral("song"), visibleText(report.song)},
             {QStringLiteral("next"), visibleText(report.next.value_or(QString()))},
             {QStringLiteral("state"), state(report)},
             {QStringLiteral("output"), visibleText(report.outputTitle)},
             {QStringLiteral("rooms"), rooms(report)},
             {QStringLiteral("volume"), QStringLiteral("%1 %").arg(shownVolumePercent(report.volume))},
             {QStringLiteral("language"), rawValue(report.language)}}};
}

bool isNothing(const QString& name, const QString& value) {
    return value.isEmpty() || (name == QLatin1String("rooms") && value == QLatin1String("0"));
}

} // namespace

QStringList ChangeLines::update(const StatusReport& report) {
    const auto now = values(report);
    const auto before = m_last ? std::optional(values(*m_last)) : std::nullopt;
    QStringList lines;
    for (std::size_t i = 0; i < now.size(); ++i) {
        const auto& [name, value] = now[i];
        if (before ? (*before)[i].second != value : !isNothing(name, value))
            lines.append((name + QStringLiteral(": ") + value).trimmed());
    }
    m_last = report;
    return lines;
}

} // namespace zofra
