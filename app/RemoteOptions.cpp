// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RemoteOptions.h"

#include "stations/texts/CommandTexts.h"

#include <utility>

namespace zofra {

namespace {

QString written(const QString& text) {
    return text;
}

QString written(RadioStation station) {
    return station.rawValue();
}

QString written(const Options::Volume& volume) {
    const bool isRise = volume.kind == Options::Volume::Kind::change && volume.percent >= 0;
    const QString number = QString::number(volume.percent);
    // A change by nothing has no sign of its own.
    return isRise ? u'+' + number : number;
}

QString written(std::chrono::seconds time) {
    return time == std::chrono::seconds(0) ? u"off"_qs : u"%1s"_qs.arg(time.count());
}

QString written(bool isOn) {
    return isOn ? u"on"_qs : u"off"_qs;
}

/// Puts options into a map, leaving out what was not asked for.
struct Writer {
    QVariantMap map;

    template<typename Value>
    void flag(const char* name, const Value& value, Value asked) {
        if (value == asked)
            map.insert(QString::fromLatin1(name), true);
    }
    template<typename Value, typename Read>
    void value(const char* name, const std::optional<Value>& value, Read) {
        if (value)
            map.insert(QString::fromLatin1(name), written(*value));
    }
};

/// Takes options out of a map and notes the first that is not what it should be.
class Reader {
public:
    explicit Reader(QVariantMap map)
        : m_map(std::move(map)) {}

    template<typename Value>
    void flag(const char* name, Value& value, Value asked) {
        if (take(name, QMetaType::Bool).toBool())
            value = asked;
    }
    /// What `read` makes of the text.
    template<typename Value, typename Read>
    void value(const char* name, std::optional<Value>& value, Read read) {
        const QVariant entry = take(name, QMetaType::QString);
        if (entry.isValid())
            value = read(entry.toString());
        if (entry.isValid() && !value)
            refuse(QString::fromLatin1(name));
    }
    /// The name of that one, once all that is known has been taken; absent when all is well.
    [[nodiscard]] std::optional<QString> refused() {
        if (!m_map.isEmpty())
            refuse(m_map.firstKey());
        return m_refused;
    }

private:
    QVariant take(const char* name, QMetaType::Type type) {
        QVariant value = m_map.take(QString::fromLatin1(name));
        if (value.isValid() && value.typeId() != type)
            refuse(QString::fromLatin1(name));
        return value;
    }
    void refuse(const QString& name) {
        if (!m_refused)
            m_refused = name;
    }

    QVariantMap m_map;
    std::optional<QString> m_refused;
};

/// What travels: the name of each entry, and the option it stands for.
void visit(auto& options, auto& map) {
    using Playback = Options::Playback;
    using Step = Options::StationStep;
    map.flag("play", options.playback, Playback::play);
    map.flag("stop", options.playback, Playback::stop);
    map.flag("toggle", options.playback, Playback::toggle);
    map.flag("next", options.stationStep, Step::next);
    map.flag("previous", options.stationStep, Step::previous);
    map.flag("no-discovery", options.noDiscovery, true);
    map.flag("headless", options.headless, true);
    map.flag("quit", options.task, Options::Task::quit);
    const auto asItIs = [](const QString& text) { return text; };
    map.value("station", options.station, RadioStation::fromRawValue);
    map.value("output", options.output, asItIs);
    map.value("volume", options.volume, volumeNamed);
    map.value("stop-in", options.stopIn, durationNamed);
    map.value("notify", options.notify, switchNamed);
    map.value("endpoints", options.endpointsFile, asItIs);
}

} // namespace

QVariantMap toVariantMap(const Options& options) {
    Writer writer;
    visit(options, writer);
    // Nothing asked for is an empty map, whoever asks.
    if (!writer.map.isEmpty() && options.language != AppLanguage::en)
        writer.map.insert(u"language"_qs, rawValue(options.language));
    return writer.map;
}

Result<Options> fromVariantMap(const QVariantMap& map) {
    Reader reader(map);
    Options options;
    visit(options, reader);
    std::optional<AppLanguage> language;
    reader.value("language", language, appLanguageFromRawValue);
    options.language = language.value_or(AppLanguage::en);
    if (const auto refused = reader.refused())
        return failure(texts::command::refusedEntry.in(options.language, *refused));
    return options;
}

} // namespace zofra
