// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RemoteOptions.h"

#include <utility>

namespace zofra {

namespace {

/// Puts options into a map, leaving out what was not asked for.
class Writer {
public:
    void flag(const char* name, bool isSet) {
        if (isSet)
            m_map.insert(QString::fromLatin1(name), true);
    }
    void text(const char* name, const std::optional<QString>& value) {
        if (value)
            m_map.insert(QString::fromLatin1(name), *value);
    }
    [[nodiscard]] QVariantMap map() const { return m_map; }

private:
    QVariantMap m_map;
};

/// Takes options out of a map and notes the first that is not what it should be.
class Reader {
public:
    explicit Reader(QVariantMap map)
        : m_map(std::move(map)) {}

    bool flag(const char* name) { return take(name, QMetaType::Bool).toBool(); }
    std::optional<QString> text(const char* name) {
        const QVariant value = take(name, QMetaType::QString);
        return value.isValid() ? std::optional(value.toString()) : std::nullopt;
    }
    /// The text, if `read` makes something of it.
    template<typename Read>
    auto value(const char* name, Read read) -> decltype(read(QString())) {
        const auto written = text(name);
        auto value = written ? read(*written) : decltype(read(QString())){};
        if (written && !value)
            refuse(QString::fromLatin1(name));
        return value;
    }
    [[nodiscard]] QString refusal() {
        if (!m_map.isEmpty())
            refuse(m_map.firstKey());
        return m_refusal;
    }

private:
    QVariant take(const char* name, QMetaType::Type type) {
        const QVariant value = m_map.take(QString::fromLatin1(name));
        if (value.isValid() && value.typeId() != type)
            refuse(QString::fromLatin1(name));
        return value;
    }
    void refuse(const QString& name) {
        if (m_refusal.isEmpty())
            m_refusal = QStringLiteral("option \"%1\" is unknown or has a wrong value").arg(name);
    }

    QVariantMap m_map;
    QString m_refusal;
};

QString written(const Options::Volume& volume) {
    const bool isRise = volume.kind == Options::Volume::Kind::change && volume.percent >= 0;
    const QString number = QString::number(volume.percent);
    // A change by nothing has no sign of its own.
    return isRise ? QLatin1Char('+') + number : number;
}

QString written(std::chrono::seconds time) {
    return time == std::chrono::seconds(0) ? QStringLiteral("off") : QStringLiteral("%1s").arg(time.count());
}

} // namespace

QVariantMap toVariantMap(const Options& options) {
    using Playback = Options::Playback;
    using Step = Options::StationStep;
    Writer writer;
    writer.flag("play", options.playback == Playback::play);
    writer.flag("stop", options.playback == Playback::stop);
    writer.flag("toggle", options.playback == Playback::toggle);
    writer.flag("next", options.stationStep == Step::next);
    writer.flag("previous", options.stationStep == Step::previous);
    writer.flag("no-discovery", options.noDiscovery);
    writer.flag("headless", options.headless);
    writer.flag("quit", options.task == Options::Task::quit);
    if (options.station)
        writer.text("station", options.station->rawValue());
    writer.text("output", options.output);
    if (options.volume)
        writer.text("volume", written(*options.volume));
    if (options.stopIn)
        writer.text("stop-in", written(*options.stopIn));
    if (options.notify)
        writer.text("notify", *options.notify ? QStringLiteral("on") : QStringLiteral("off"));
    writer.text("endpoints", options.endpointsFile);
    QVariantMap map = writer.map();
    // Nothing asked for is an empty map, whoever asks.
    if (!map.isEmpty() && options.language != AppLanguage::en)
        map.insert(QStringLiteral("language"), rawValue(options.language));
    return map;
}

Result<Options> fromVariantMap(const QVariantMap& map) {
    using Playback = Options::Playback;
    using Step = Options::StationStep;
    Reader reader(map);
    Options options;
    for (const auto& [name, playback] : {std::pair("play", Playback::play), std::pair("stop", Playback::stop),
                                         std::pair("toggle", Playback::toggle)}) {
        if (reader.flag(name))
            options.playback = playback;
    }
    for (const auto& [name, step] : {std::pair("next", Step::next), std::pair("previous", Step::previous)}) {
        if (reader.flag(name))
            options.stationStep = step;
    }
    options.noDiscovery = reader.flag("no-discovery");
    options.headless = reader.flag("headless");
    if (reader.flag("quit"))
        options.task = Options::Task::quit;
    options.station =
        reader.value("station", [](const QString& name) { return RadioStation::fromRawValue(name); });
    options.output = reader.text("output");
    options.volume = reader.value("volume", volumeNamed);
    options.stopIn = reader.value("stop-in", durationNamed);
    options.notify = reader.value("notify", switchNamed);
    options.endpointsFile = reader.text("endpoints");
    options.language = reader.value("language", appLanguageFromRawValue).value_or(AppLanguage::en);
    const QString refusal = reader.refusal();
    if (!refusal.isEmpty())
        return failure(refusal);
    return options;
}

} // namespace zofra
