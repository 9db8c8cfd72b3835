// SPDX-License-Identifier: GPL-3.0-or-later
// What a desktop's portal, or whoever took its name, says over a real bus about how programs should look.
#include "app/panel/PortalAppearance.h"
#include "fuzz/FuzzBus.h"
#include "fuzz/FuzzInput.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QDBusVirtualObject>

#include <optional>

/// (ddd): a colour as the portal tells it.
struct Shares {
    double red = 0;
    double green = 0;
    double blue = 0;

    friend bool operator==(const Shares&, const Shares&) = default;
};
Q_DECLARE_METATYPE(Shares)

QDBusArgument& operator<<(QDBusArgument& argument, const Shares& value) {
    argument.beginStructure();
    argument << value.red << value.green << value.blue;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, Shares& value) {
    argument.beginStructure();
    argument >> value.red >> value.green >> value.blue;
    argument.endStructure();
    return argument;
}

namespace {

using namespace zofra;

const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settings = QStringLiteral("org.freedesktop.portal.Settings");
const QString group = QStringLiteral("org.freedesktop.appearance");
/// So many wrappers around a value are taken off; what is sent has one by itself.
constexpr int mostWrappers = 4;

struct Setting {
    QString key;
    QVariant value;
    int wrappers = 0;

    [[nodiscard]] QVariant wrapped() const {
        auto made = value;
        for (int i = 0; i < wrappers; ++i)
            made = QVariant::fromValue(QDBusVariant(made));
        return made;
    }
};

double share(fuzz::Input& input) {
    return input.byte() % 4 == 0 ? input.number() / 1e9 : input.byte() / 255.0;
}

Setting settingOf(fuzz::Input& input) {
    Setting setting;
    const auto known = input.oneOf({QStringLiteral("accent-color"), QStringLiteral("color-scheme"),
                                    QStringLiteral("contrast"), QString()});
    setting.key = known.isEmpty() ? input.text() : known;
    const auto kind = input.byte() % 4;
    setting.value = kind == 0   ? input.value()
                    : kind == 1 ? QVariant(static_cast<uint>(input.byte() % 4))
                                : QVariant::fromValue(Shares{share(input), share(input), share(input)});
    setting.wrappers = input.byte() % 6;
    return setting;
}

/// What the program should make of it.
void apply(DesktopAppearance& appearance, const Setting& setting) {
    const auto value = setting.wrappers <= mostWrappers ? setting.value : QVariant();
    const auto number = value.metaType() == QMetaType::fromType<uint>() ? value.toUInt() : 0;
    if (setting.key == QLatin1String("accent-color")) {
        const auto shares = value.value<Shares>();
        const auto isShare = [](double one) { return one >= 0 && one <= 1; };
        const bool isColor = value.metaType() == QMetaType::fromType<Shares>() && isShare(shares.red) &&
                             isShare(shares.green) && isShare(shares.blue);
        appearance.accent = isColor ? std::optional(QColor::fromRgbF(static_cast<float>(shares.red),
                                                                     static_cast<float>(shares.green),
                                                                     static_cast<float>(shares.blue)))
                                    : std::nullopt;
    } else if (setting.key == QLatin1String("color-scheme")) {
        using Scheme = DesktopAppearance::ColorScheme;
        appearance.colorScheme = number == 1 ? Scheme::dark : number == 2 ? Scheme::light : Scheme::unsaid;
    } else if (setting.key == QLatin1String("contrast")) {
        using Contrast = DesktopAppearance::Contrast;
        appearance.contrast = number == 1 ? Contrast::high : Contrast::normal;
    }
}

/// The stranger who has the portal's name.
class Portal final : public QDBusVirtualObject {
public:
    explicit Portal(fuzz::Bus& bus)
        : m_bus(bus) {
        qDBusRegisterMetaType<Shares>();
        qDBusRegisterMetaType<QMap<QString, QVariantMap>>();
        fuzz::require(bus.stranger().registerVirtualObject(path, this));
        fuzz::require(bus.stranger().registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
    }
    ~Portal() override { m_bus.stranger().unregisterObject(path); }
    Portal(const Portal&) = delete;
    Portal& operator=(const Portal&) = delete;

    /// What is answered; nothing the portal has a form for when it is absent.
    std::optional<QMap<QString, QVariantMap>> settings;
    QVariant nonsense;
    bool wasAsked = false;

    [[nodiscard]] QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        wasAsked = true;
        connection.send(message.createReply(settings ? QVariant::fromValue(*settings) : nonsense));
        return true;
    }

private:
    fuzz::Bus& m_bus;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    auto& bus = fuzz::Bus::instance();
    Portal portal(bus);
    DesktopAppearance expected;
    if (input.byte() % 4 == 0) {
        portal.nonsense = input.value();
    } else {
        auto& all = portal.settings.emplace();
        all.insert(input.text(), input.map(1));
        // A later entry of the same key takes the place of an earlier one.
        QMap<QString, Setting> told;
        for (auto count = input.byte() % 6; count > 0; --count) {
            const auto setting = settingOf(input);
            told.insert(setting.key, setting);
        }
        auto& ours = all[group];
        ours.clear();
        for (const auto& setting : told) {
            ours.insert(setting.key, setting.wrapped());
            apply(expected, setting);
        }
    }
    AppearanceSource source;
    PortalAppearance appearance(source);
    appearance.attach(bus.own());
    fuzz::require(test::spinUntil([&] { return portal.wasAsked; }));
    bus.settle();
    fuzz::require(source.current() == expected);

    for (int signal = 0; signal < 8 && !input.isEmpty(); ++signal) {
        const auto setting = settingOf(input);
        const bool isOurs = input.byte() % 8 != 7;
        auto message = QDBusMessage::createSignal(path, settings, QStringLiteral("SettingChanged"));
        message << (isOurs ? group : input.text()) << setting.key
                << QVariant::fromValue(QDBusVariant(setting.wrapped()));
        fuzz::require(bus.stranger().send(message));
        if (message.arguments()[0] == group)
            apply(expected, setting);
    }
    bus.settle();
    fuzz::require(source.current() == expected);
    return 0;
}
