// SPDX-License-Identifier: GPL-3.0-or-later
// Any call that anybody on the bus can make: media player, status item, menu, search and the program's own
// interface, over a real bus. Calls are built from what the objects say of themselves, so that most of them
// get past the check of their types.
#include "app/RemoteOptions.h"
#include "fuzz/FuzzBus.h"
#include "fuzz/FuzzInput.h"
#include "platform/linux/ApplicationBus.h"
#include "platform/linux/MprisPlayer.h"
#include "platform/linux/SearchProvider.h"
#include "platform/linux/tray/DBusMenuObject.h"
#include "platform/linux/tray/StatusNotifierObject.h"

#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QXmlStreamReader>

namespace {

using namespace zofra;

const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");
constexpr double volume = 0.5;

/// A method, or a property to be written (`out` is then empty).
struct Member {
    QString path;
    QString interface;
    QString name;
    QStringList in;
    QString out;
    bool isProperty = false;
};

/// Everything that the program shows on the bus, and what must hold in each handler.
struct Program {
    Program(fuzz::Bus& bus, fuzz::Input& input)
        : mpris(bus.session())
        , application(bus.session())
        , search(bus.session(), {{QStringLiteral("zofra"), QStringLiteral("Zofra Zofra"), {}},
                                 {QStringLiteral("q"), input.text(), input.text()}})
        , item(bus.own(), {QStringLiteral("/StatusNotifierItem"), QStringLiteral("/MenuBar"), {}}, clicks())
        , menu(bus.own(), QStringLiteral("/MenuBar"), {queue, [this] { return current(); }, {}, {}})
        , title(input.text()) {
        mpris.setStations({{QStringLiteral("zofra"), QStringLiteral("Zofra")},
                           {QStringLiteral("q"), input.text()},
                           {QStringLiteral("last"), {}}});
        mpris.setStation(QStringLiteral("q"), input.text());
        mpris.setVolume(volume);
        const auto act = [] { return RemoteCommandStatus::success; };
        mpris.setPlayHandler(act);
        mpris.setPauseHandler(act);
        mpris.setTogglePlayPauseHandler([] { return RemoteCommandStatus::commandFailed; });
        mpris.onVolumeRequested = [](double asked) { fuzz::require(asked >= 0 && asked <= 1); };
        const auto choose = [](const QString& key) {
            fuzz::require(key == QLatin1String("zofra") || key == QLatin1String("q") ||
                          key == QLatin1String("last"));
        };
        mpris.onStationRequested = mpris.onPlayStationRequested = search.onChosen = choose;
        search.onShow = [] {};
        application.onActivate = [](const Activation&) {};
        application.onOpen = [](const QStringList& uris, const Activation&) {
            fuzz::require(uris.size() <= 64);
        };
        application.onActivateAction = [](const QString&, const QVariantList& parameter, const Activation&) {
            fuzz::require(parameter.size() <= 64);
        };
        application.onRun = [](const QVariantMap& map) {
            const auto options = fromVariantMap(map);
            fuzz::require(options || !options.error().isEmpty());
            return RunReply{options ? 0 : 2, options ? QString() : options.error()};
        };
        application.onStatus = application.onBarLine = [] { return QStringLiteral("{}"); };
        fuzz::require(application.tryAcquire() == ApplicationBus::Claim::acquired);
        const bool isDirect = input.byte() % 2 == 0;
        item.setMode(isDirect ? StatusItemMode::direct : StatusItemMode::hostmenu,
                     StatusNotifierObject::ToolTipText::markup);
        item.setContent({title, title, QStringLiteral("icon"), QStringLiteral("music.note"), title, title});
    }

    [[nodiscard]] static StatusNotifierObject::Handlers clicks() {
        return {[](QPoint) {},
                [](QPoint) {},
                [] {},
                [](int) {},
                [](const QString&) {},
                [](const QString&) {
                    return QList<BusPixmap>{BusPixmap{1, 1, QByteArray(4, '\0')}};
                }};
    }

    /// Changes with each click, as menus do.
    [[nodiscard]] Menu current() {
        const auto acting = [this](const QString& text, bool isEnabled) {
            MenuItem made;
            made.title = text;
            made.isEnabled = isEnabled;
            made.action = [this](const MenuItem& sender) {
                fuzz::require(sender.isEnabled);
                ++clicked;
                menu.menuDidChange();
            };
            return made;
        };
        auto more = acting(title + QString::number(clicked), true);
        more.action = nullptr;
        more.submenu = {acting(title, true), MenuItem::separator(), acting(title, false)};
        return {acting(title, clicked % 3 != 1), acting(QStringLiteral("never"), false),
                MenuItem::separator(), more};
    }

    QtMainQueue queue;
    MprisPlayer mpris;
    ApplicationBus application;
    SearchProvider search;
    StatusNotifierObject item;
    DBusMenuObject menu;
    QString title;
    int clicked = 0;
};

/// What an object says of itself, without what the library adds.
void readMembers(const QString& path, const QString& xml, QList<Member>& members) {
    QXmlStreamReader reader(xml);
    QString interface;
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        const auto attributes = reader.attributes();
        const auto name = attributes.value(QStringLiteral("name")).toString();
        const auto type = attributes.value(QStringLiteral("type")).toString();
        if (reader.name() == u"interface")
            interface = name;
        if (interface.startsWith(QLatin1String("org.freedesktop.DBus.")))
            continue;
        if (reader.name() == u"method")
            members << Member{path, interface, name, {}, {}};
        else if (reader.name() == u"property")
            members << Member{path, interface, name, {type}, {}, true};
        else if (reader.name() == u"arg" && attributes.value(QStringLiteral("direction")) == u"in")
            members.last().in << type;
        else if (reader.name() == u"arg" && attributes.value(QStringLiteral("direction")) == u"out")
            members.last().out += type;
    }
    fuzz::require(!reader.hasError() && !interface.isEmpty());
}

QDBusMessage callTo(const fuzz::Bus& bus, const QString& path, const QString& interface, const QString& name,
                    const QVariantList& arguments = {}) {
    auto message = QDBusMessage::createMethodCall(bus.own().baseService(), path, interface, name);
    message.setArguments(arguments);
    return message;
}

QList<Member> membersOf(fuzz::Bus& bus) {
    QList<Member> members;
    for (const char* path : {"/org/mpris/MediaPlayer2", "/be/zofra/ZofraZofra", "/be/zofra/ZofraZofra/search",
                             "/StatusNotifierItem", "/MenuBar"}) {
        const auto place = QString::fromLatin1(path);
        const auto answer =
            bus.answers({callTo(bus, place, QStringLiteral("org.freedesktop.DBus.Introspectable"),
                                QStringLiteral("Introspect"))});
        readMembers(place, answer[0].arguments().value(0).toString(), members);
    }
    return members;
}

QString word(fuzz::Input& input) {
    return input.byte() % 3 == 0
               ? input.text()
               : input.oneOf({QStringLiteral("clicked"), QStringLiteral("opened"), QStringLiteral("closed"),
                              QStringLiteral("hovered"), QStringLiteral("label"), QStringLiteral("enabled"),
                              QStringLiteral("children-display"), QStringLiteral("icon-name"),
                              QStringLiteral("zofra"), QStringLiteral("Alphabetical"),
                              QStringLiteral("vertical"), QStringLiteral("horizontal")});
}

int number(fuzz::Input& input) {
    return input.byte() % 4 == 0 ? input.number() : input.byte() % 12;
}

QVariant valueOf(const QString& type, fuzz::Input& input);

/// One entry more than every cap has, now and then.
template<typename Value, typename Make>
QVariant listOf(fuzz::Input& input, Make make) {
    QList<Value> list;
    const auto one = input.byte();
    for (int count = one >= 250 ? 1025 : one >= 240 ? 65 : one % 6; count > 0; --count)
        list << make();
    return QVariant::fromValue(list);
}

QVariantMap optionsOf(fuzz::Input& input) {
    auto map = input.map(1);
    for (auto count = input.byte() % 4; count > 0; --count) {
        const auto key =
            input.oneOf({QStringLiteral("play"), QStringLiteral("stop"), QStringLiteral("toggle"),
                         QStringLiteral("station"), QStringLiteral("output"), QStringLiteral("volume"),
                         QStringLiteral("language"), QStringLiteral("quit"), QStringLiteral("stop-in"),
                         QStringLiteral("desktop-startup-id"), QStringLiteral("activation-token")});
        map.insert(key, input.value(1));
    }
    if (input.byte() % 64 == 63) {
        for (int i = 0; i < 65; ++i)
            map.insert(QString::number(i), i);
    }
    return map;
}

QVariant valueOf(const QString& type, fuzz::Input& input) {
    if (type == QLatin1String("s"))
        return word(input);
    if (type == QLatin1String("i"))
        return number(input);
    if (type == QLatin1String("u"))
        return static_cast<uint>(number(input));
    if (type == QLatin1String("x"))
        return static_cast<qlonglong>(input.number());
    if (type == QLatin1String("b"))
        return input.byte() % 2 == 1;
    if (type == QLatin1String("d"))
        return input.byte() % 8 == 0 ? qQNaN() : input.number() / 1e9;
    if (type == QLatin1String("o"))
        return QVariant::fromValue(QDBusObjectPath(
            QStringLiteral("/be/zofra/ZofraZofra/playlist/") +
            input.oneOf({QStringLiteral("zofra"), QStringLiteral("q"), QStringLiteral("none")})));
    if (type == QLatin1String("v"))
        return QVariant::fromValue(QDBusVariant(input.value(1)));
    if (type == QLatin1String("as"))
        return listOf<QString>(input, [&] { return word(input); });
    if (type == QLatin1String("ai"))
        return listOf<int>(input, [&] { return number(input); });
    if (type == QLatin1String("av"))
        return listOf<QDBusVariant>(input, [&] { return QDBusVariant(input.value(1)); });
    if (type == QLatin1String("a(isvu)"))
        return listOf<BusMenuEvent>(input, [&] {
            return BusMenuEvent{number(input), word(input), QDBusVariant(input.value(1)), 0};
        });
    if (type == QLatin1String("a{sv}"))
        return optionsOf(input);
    return input.value(); // No method takes anything else; properties may.
}

/// The call, and whether all its types are those that the member takes.
std::pair<QDBusMessage, bool> callOf(const fuzz::Bus& bus, const Member& member, fuzz::Input& input) {
    QVariantList arguments;
    bool isRight = true;
    for (const auto& type : member.in) {
        isRight = isRight && input.byte() % 16 != 15;
        arguments << (isRight ? valueOf(type, input) : input.value());
    }
    if (!member.isProperty)
        return {callTo(bus, member.path, member.interface, member.name, arguments), isRight};
    const auto act = input.oneOf({QStringLiteral("Set"), QStringLiteral("Get"), QStringLiteral("GetAll")});
    if (act == QLatin1String("GetAll"))
        return {callTo(bus, member.path, properties, act, {member.interface}), false};
    if (act == QLatin1String("Get"))
        return {callTo(bus, member.path, properties, act, {member.interface, member.name}), false};
    return {callTo(bus, member.path, properties, act,
                   {member.interface, member.name, QVariant::fromValue(QDBusVariant(arguments[0]))}),
            false};
}

/// Answered as the member says, or refused for a reason of the bus's own.
void check(const Member& member, bool isRight, const QDBusMessage& answer) {
    if (answer.type() == QDBusMessage::ReplyMessage) {
        fuzz::require(member.isProperty || answer.signature() == member.out);
        if (member.isProperty && answer.signature() == QLatin1String("v")) {
            const auto value = qvariant_cast<QDBusVariant>(answer.arguments()[0]).variant();
            const auto type = value.metaType() == QMetaType::fromType<QDBusArgument>()
                                  ? qvariant_cast<QDBusArgument>(value).currentSignature()
                                  : QString::fromLatin1(QDBusMetaType::typeToSignature(value.metaType()));
            fuzz::require(type == member.in[0]);
        }
        return;
    }
    const auto name = answer.errorName();
    const QLatin1String common("org.freedesktop.DBus.Error.");
    fuzz::require(name.startsWith(common));
    const auto reason = name.mid(common.size());
    const QStringList ofRight{QStringLiteral("LimitsExceeded"), QStringLiteral("NotSupported"),
                              QStringLiteral("Failed"), QStringLiteral("InvalidArgs")};
    fuzz::require(ofRight.contains(reason) || (!isRight && reason == QLatin1String("PropertyReadOnly")));
    fuzz::require(!answer.errorMessage().isEmpty() && answer.errorMessage().size() < 1000);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    auto& bus = fuzz::Bus::instance();
    Program program(bus, input);
    const auto members = membersOf(bus);
    QList<QDBusMessage> calls;
    std::vector<std::pair<Member, bool>> called;
    while (calls.size() < 16 && !input.isEmpty()) {
        const auto& member = members[input.byte() % members.size()];
        auto [call, isRight] = callOf(bus, member, input);
        calls << call;
        called.emplace_back(member, isRight);
    }
    const auto answers = bus.answers(calls);
    for (std::size_t i = 0; i < called.size(); ++i)
        check(called[i].first, called[i].second, answers[static_cast<qsizetype>(i)]);
    fuzz::require(membersOf(bus).size() == members.size());
    return 0;
}
