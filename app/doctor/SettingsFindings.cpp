// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/SettingsFindings.h"

#include "app/doctor/Report.h"
#include "stations/AppLanguage.h"
#include "stations/RadioStation.h"
#include "stations/texts/DoctorTexts.h"

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

QString writeCure(const SettingsFacts& facts, AppLanguage language) {
    const bool isFull = facts.writeProblem.contains(QLatin1String("space left")) ||
                        facts.writeProblem.contains(QLatin1String("quota"));
    return isFull ? texts::doctor::makeRoom.in(language)
                  : texts::doctor::makeWritable.in(language, shortened(QFileInfo(facts.path).absolutePath()));
}

} // namespace

Finding judgeSettings(const SettingsFacts& facts, AppLanguage language) {
    const QString path = shortened(facts.path);
    const QJsonObject details{{QStringLiteral("path"), facts.path},
                              {QStringLiteral("exists"), facts.exists},
                              {QStringLiteral("damaged"), facts.isDamaged}};
    if (!facts.readProblem.isEmpty())
        return problem(area(), texts::doctor::cannotBeRead.in(language, path, facts.readProblem),
                       texts::doctor::makeReadable.in(language, path), details);
    if (!facts.writeProblem.isEmpty())
        return problem(area(), texts::doctor::cannotBeWritten.in(language, path, facts.writeProblem),
                       writeCure(facts, language), details);
    if (facts.isDamaged)
        return problem(area(), texts::doctor::damaged.in(language, path),
                       texts::doctor::writeAnew.in(language), details);
    if (const auto strange = strangeValues(facts); !strange.isEmpty())
        return problem(area(),
                       texts::doctor::notUsable.in(language, path, strange.join(QStringLiteral(", "))),
                       texts::doctor::correctLines.in(language), details);
    return fine(area(), facts.exists ? path : texts::doctor::notThereYet.in(language, path), details);
}

Finding judgeEndpoints(const EndpointsFacts& facts, AppLanguage language) {
    const QString area = QString::fromLatin1(endpointsArea);
    const QJsonObject details{{QStringLiteral("files"), QJsonArray::fromStringList(facts.files)}};
    if (!facts.refusal.isEmpty())
        return problem(area, facts.refusal, texts::doctor::correctLine.in(language), details);
    QStringList names;
    for (const auto& file : facts.files)
        names.append(shortened(file));
    return fine(area,
                names.isEmpty() ? texts::doctor::builtInHosts.in(language) : names.join(QStringLiteral(", ")),
                details);
}

} // namespace zofra::doctor
