// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RemoteOptions.h"

namespace zofra {

namespace {

constexpr const char* playKey = "play";
constexpr const char* stationKey = "station";
constexpr const char* outputKey = "output";
constexpr const char* endpointsKey = "endpoints";
constexpr const char* noDiscoveryKey = "no-discovery";
constexpr const char* headlessKey = "headless";
constexpr const char* quitKey = "quit";

QString key(const char* name) {
    return QString::fromLatin1(name);
}

/// Takes values out of the map and notes the first that is not what it should be.
class Taker {
public:
    explicit Taker(QVariantMap map)
        : m_map(std::move(map)) {}

    bool flag(const char* name) {
        const QVariant value = m_map.take(key(name));
        if (value.isValid() && value.typeId() != QMetaType::Bool)
            refuse(key(name));
        return value.toBool();
    }
    std::optional<QString> text(const char* name) {
        const QVariant value = m_map.take(key(name));
        if (!value.isValid())
            return std::nullopt;
        if (value.typeId() != QMetaType::QString)
            refuse(key(name));
        return value.toString();
    }
    void refuse(const QString& name) {
        if (m_refusal.isEmpty())
            m_refusal = QStringLiteral("option \"%1\" is unknown or has a wrong value").arg(name);
    }
    [[nodiscard]] QString refusal() {
        if (m_refusal.isEmpty() && !m_map.isEmpty())
            refuse(m_map.firstKey());
        return m_refusal;
    }

private:
    QVariantMap m_map;
    QString m_refusal;
};

} // namespace

QVariantMap toVariantMap(const Options& options) {
    QVariantMap map;
    const auto addFlag = [&map](const char* name, bool isSet) {
        if (isSet)
            map.insert(key(name), true);
    };
    addFlag(playKey, options.play);
    addFlag(noDiscoveryKey, options.noDiscovery);
    addFlag(headlessKey, options.headless);
    addFlag(quitKey, options.task == Options::Task::quit);
    if (options.station)
        map.insert(key(stationKey), options.station->rawValue());
    if (options.output)
        map.insert(key(outputKey), *options.output);
    if (options.endpointsFile)
        map.insert(key(endpointsKey), *options.endpointsFile);
    return map;
}

std::variant<Options, QString> fromVariantMap(const QVariantMap& map) {
    Taker taker(map);
    Options options;
    options.play = taker.flag(playKey);
    options.noDiscovery = taker.flag(noDiscoveryKey);
    options.headless = taker.flag(headlessKey);
    if (taker.flag(quitKey))
        options.task = Options::Task::quit;
    options.output = taker.text(outputKey);
    options.endpointsFile = taker.text(endpointsKey);
    if (const auto name = taker.text(stationKey)) {
        options.station = RadioStation::fromRawValue(*name);
        if (!options.station)
            taker.refuse(key(stationKey));
    }
    const QString refusal = taker.refusal();
    if (!refusal.isEmpty())
        return refusal;
    return options;
}

} // namespace zofra
