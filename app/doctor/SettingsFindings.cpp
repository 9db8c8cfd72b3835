// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/SettingsFindings.h"

#include "app/doctor/Report.h"
#include "stations/AppLanguage.h"
#include "stations/RadioStation.h"

#include <QDir>
#include <QJsonArray>

namespace zofra::doctor {

namespace {

QString area() {
    return QStringLiteral("settings");
}

/// A path as a person writes it.
QString shortened(const QString& path) {
    const QString home = QDir::homePath() + u'/';
    return home.size() > 1 && path.startsWith(home) ? QStringLiteral("~/") + path.mid(home.size()) : path;
}

bool isVolume(const QByteArray& text) {
    bool isNumber = false;
    const float value = text.trimmed().toFloat(&isNumber);
    return isNumber && value >= 0.0F && value <= 1.0F;
}

bool isTrayMode(const QByteArray& text) {
    return text == "auto" || text == "direct" || text == "hostmenu";
}

/// Values that the program takes for none: "zofra_radio_volume = 7.5".
QStringList strangeValues(const SettingsFacts& facts) {
    QStringList strange;
    const auto look = [&strange](const char* key, const std::optional<QByteArray>& value, bool isGood) {
        constexpr qsizetype longest = 30;
        if (value && !isGood)
            strange.append(QString::fromLatin1(key) + QStringLiteral(" = ") +
                           QString::fromUtf8(value->left(longest)));
    };
    look("zofra_radio_volume", facts.volume, facts.volume && isVolume(*facts.volume));
    look("zofra_selected_station", facts.station,
         facts.station && RadioStation::fromRawValue(QString::fromUtf8(*facts.station)));
    look("app_language", facts.language,
         facts.language && appLanguageFromRawValue(QString::fromUtf8(*facts.language)));
    look("tray/mode", facts.trayMode, facts.trayMode && isTrayMode(*facts.trayMode));
    return strange;
}

QString writeCure(const SettingsFacts& facts) {
    const bool isFull = facts.writeProblem.contains(QLatin1String("space left")) ||
                        facts.writeProblem.contains(QLatin1String("quota"));
    return isFull
               ? QStringLiteral("make room on that disk (df -h); nothing that is stored is lost meanwhile.")
               : QStringLiteral("make file and folder writable: chmod -R u+rwX ") +
                     shortened(QFileInfo(facts.path).absolutePath()) +
                     QStringLiteral("; until then changes last until the program ends.");
}

} // namespace

Finding judgeSettings(const SettingsFacts& facts) {
    const QString path = shortened(facts.path);
    const QJsonObject details{{QStringLiteral("path"), facts.path},
                              {QStringLiteral("exists"), facts.exists},
                              {QStringLiteral("damaged"), facts.isDamaged}};
    if (!facts.readProblem.isEmpty())
        return problem(area(), path + QStringLiteral(" cannot be read: ") + facts.readProblem,
                       QStringLiteral("make it readable: chmod u+rw ") + path +
                           QStringLiteral("; until then every start begins with the defaults."),
                       details);
    if (!facts.writeProblem.isEmpty())
        return problem(area(), path + QStringLiteral(" cannot be written: ") + facts.writeProblem,
                       writeCure(facts), details);
    if (facts.isDamaged)
        return problem(
            area(), path + QStringLiteral(" is damaged: it holds lines that are no text"),
            QStringLiteral(
                "choose a station or volume: the file is then written anew, and kept as it was beside it "
                "(.damaged)."),
            details);
    if (const auto strange = strangeValues(facts); !strange.isEmpty())
        return problem(area(),
                       path + QStringLiteral(": not usable, so the default counts: ") +
                           strange.join(QStringLiteral(", ")),
                       QStringLiteral("correct or delete these lines, or choose the value anew in the menu."),
                       details);
    return fine(area(), facts.exists ? path : path + QStringLiteral(" (not there yet: the defaults count)"),
                details);
}

Finding judgeEndpoints(const EndpointsFacts& facts) {
    const QString area = QString::fromLatin1(endpointsArea);
    const QJsonObject details{{QStringLiteral("files"), QJsonArray::fromStringList(facts.files)}};
    if (!facts.refusal.isEmpty())
        return problem(
            area, facts.refusal,
            QStringLiteral(
                "correct or delete that line; /etc/xdg/zofrazofra/endpoints.ini explains every key."),
            details);
    QStringList names;
    for (const auto& file : facts.files)
        names.append(shortened(file));
    return fine(area,
                names.isEmpty() ? QStringLiteral("no file: the built-in hosts")
                                : names.join(QStringLiteral(", ")),
                details);
}

} // namespace zofra::doctor
