// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/MprisPlayer.h"

#include "platform/linux/DBusCalls.h"
#include "platform/linux/DBusNameOwner.h"
#include "platform/linux/DBusSignal.h"
#include "tests/platform/desk/BusTest.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QXmlStreamReader>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

namespace zofra {
namespace {

using test::errorOf;
using test::spinUntil;

const auto service = QStringLiteral("org.mpris.MediaPlayer2.zofrazofra");
const auto path = QStringLiteral("/org/mpris/MediaPlayer2");
const auto root = QStringLiteral("org.mpris.MediaPlayer2");
const auto player = QStringLiteral("org.mpris.MediaPlayer2.Player");
const auto properties = QStringLiteral("org.freedesktop.DBus.Properties");

class MprisPlayerTest : public test::BusTest {
protected:
    void SetUp() override {
        BusTest::SetUp();
        if (!bus)
            return;
        mpris.emplace(*bus);
        mpris->setPlayHandler([this] { return command("play"); });
        mpris->setPauseHandler([this] { return command("pause"); });
        mpris->setTogglePlayPauseHandler([this] { return command("toggle"); });
        listen();
        ASSERT_TRUE(waitForName());
        settle();
        told.clear();
        toldInterfaces.clear();
    }
    void listen() {
        changes.emplace(peer->connection(),
                        DBusSignal::Source{{}, path, properties, QStringLiteral("PropertiesChanged"), {}},
                        [this](const QDBusMessage& message) {
                            told.push_back(qdbus_cast<QVariantMap>(message.arguments().at(1)));
                            toldInterfaces.push_back(message.arguments().at(0).toString());
                        });
    }
    bool waitForName() {
        const DBusNameOwner owner(peer->connection(), service);
        return spinUntil([&] { return !owner.owner().isEmpty(); });
    }
    RemoteCommandStatus command(const char* name) {
        commands.push_back(QString::fromLatin1(name));
        return outcome;
    }
    QVariant get(const QString& interface, const QString& name) {
        const auto reply = call(service, path, properties, QStringLiteral("Get"), {interface, name});
        EXPECT_EQ(errorOf(reply), QStringLiteral("answered")) << name.toStdString();
        return reply.arguments().isEmpty() ? QVariant()
                                           : qvariant_cast<QDBusVariant>(reply.arguments()[0]).variant();
    }
    QVariantMap metadata() { return qdbus_cast<QVariantMap>(get(player, QStringLiteral("Metadata"))); }
    QDBusMessage set(const QString& name, const QVariant& value) {
        return call(service, path, properties, QStringLiteral("Set"),
                    {player, name, QVariant::fromValue(QDBusVariant(value))});
    }
    /// Everything told so far has arrived once a call has been answered after it.
    void settle() {
        get(root, QStringLiteral("Identity"));
        QCoreApplication::processEvents();
    }

    std::optional<MprisPlayer> mpris;
    std::optional<DBusSignal> changes;
    std::vector<QVariantMap> told;
    std::vector<QString> toldInterfaces;
    std::vector<QString> commands;
    RemoteCommandStatus outcome = RemoteCommandStatus::success;
};

TEST_F(MprisPlayerTest, saysWhoItIs) {
    EXPECT_EQ(get(root, QStringLiteral("Identity")), QStringLiteral("Zofra Zofra"));
    EXPECT_EQ(get(root, QStringLiteral("DesktopEntry")), QStringLiteral("be.zofra.ZofraZofra"));
    EXPECT_EQ(get(root, QStringLiteral("HasTrackList")), false);
    EXPECT_EQ(get(root, QStringLiteral("CanQuit")), true);
    EXPECT_EQ(get(root, QStringLiteral("SupportedUriSchemes")), QStringList());
    EXPECT_EQ(get(root, QStringLiteral("SupportedMimeTypes")), QStringList());
}

TEST_F(MprisPlayerTest, answersAllPropertiesWithTheirTypes) {
    const auto reply = call(service, path, properties, QStringLiteral("GetAll"), {player});
    const auto all = qdbus_cast<QVariantMap>(reply.arguments().value(0));
    QMap<QString, QString> types;
    for (auto it = all.begin(); it != all.end(); ++it)
        types[it.key()] = it->metaType() == QMetaType::fromType<QDBusArgument>()
                              ? qvariant_cast<QDBusArgument>(*it).currentSignature()
                              : QString::fromLatin1(it->typeName());
    const QMap<QString, QString> expected{{QStringLiteral("PlaybackStatus"), QStringLiteral("QString")},
                                          {QStringLiteral("Rate"), QStringLiteral("double")},
                                          {QStringLiteral("Metadata"), QStringLiteral("a{sv}")},
                                          {QStringLiteral("Volume"), QStringLiteral("double")},
                                          {QStringLiteral("Position"), QStringLiteral("qlonglong")},
                                          {QStringLiteral("MinimumRate"), QStringLiteral("double")},
                                          {QStringLiteral("MaximumRate"), QStringLiteral("double")},
                                          {QStringLiteral("CanGoNext"), QStringLiteral("bool")},
                                          {QStringLiteral("CanGoPrevious"), QStringLiteral("bool")},
                                          {QStringLiteral("CanPlay"), QStringLiteral("bool")},
                                          {QStringLiteral("CanPause"), QStringLiteral("bool")},
                                          {QStringLiteral("CanSeek"), QStringLiteral("bool")},
                                          {QStringLiteral("CanControl"), QStringLiteral("bool")}};
    EXPECT_EQ(types, expected);
    EXPECT_EQ(all.value(QStringLiteral("PlaybackStatus")), QStringLiteral("Stopped"));
    EXPECT_EQ(all.value(QStringLiteral("Rate")), 1.0);
    EXPECT_EQ(all.value(QStringLiteral("Position")), qlonglong(0));
    EXPECT_EQ(all.value(QStringLiteral("CanSeek")), false);
    EXPECT_EQ(all.value(QStringLiteral("CanGoNext")), false);
    EXPECT_EQ(all.value(QStringLiteral("CanGoPrevious")), false);
    EXPECT_EQ(all.value(QStringLiteral("CanPlay")), true);
    EXPECT_EQ(all.value(QStringLiteral("CanPause")), true);
    EXPECT_EQ(all.value(QStringLiteral("CanControl")), true);
}

TEST_F(MprisPlayerTest, describesItself) {
    const auto reply = call(service, path, QStringLiteral("org.freedesktop.DBus.Introspectable"),
                            QStringLiteral("Introspect"));
    QXmlStreamReader xml(reply.arguments().value(0).toString());
    QString interface;
    QStringList members;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        const auto name = xml.attributes().value(QStringLiteral("name")).toString();
        if (xml.name() == QStringLiteral("interface"))
            interface = name;
        else if (xml.name() != QStringLiteral("arg") && interface == player)
            members += name;
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    for (const auto* name : {"Play", "Pause", "PlayPause", "Stop", "Next", "Previous", "Seek", "SetPosition",
                             "OpenUri", "Seeked", "Metadata", "Volume", "PlaybackStatus"})
        EXPECT_TRUE(members.contains(QString::fromLatin1(name))) << name;
}

TEST_F(MprisPlayerTest, obeysCommands) {
    for (const auto* method : {"Play", "Pause", "PlayPause", "Stop"})
        EXPECT_EQ(errorOf(call(service, path, player, QString::fromLatin1(method))),
                  QStringLiteral("answered"));
    EXPECT_EQ(commands, (std::vector<QString>{QStringLiteral("play"), QStringLiteral("pause"),
                                              QStringLiteral("toggle"), QStringLiteral("pause")}));
}

TEST_F(MprisPlayerTest, tellsAFailedCommand) {
    outcome = RemoteCommandStatus::commandFailed;
    EXPECT_EQ(errorOf(call(service, path, player, QStringLiteral("Play"))),
              QStringLiteral("org.freedesktop.DBus.Error.Failed"));
}

TEST_F(MprisPlayerTest, doesNothingForWhatALiveStreamCannotDo) {
    for (const auto* method : {"Next", "Previous"})
        EXPECT_EQ(errorOf(call(service, path, player, QString::fromLatin1(method))),
                  QStringLiteral("answered"));
    EXPECT_EQ(errorOf(call(service, path, player, QStringLiteral("Seek"), {qlonglong(1000)})),
              QStringLiteral("answered"));
    EXPECT_EQ(errorOf(call(service, path, player, QStringLiteral("SetPosition"),
                           {QVariant::fromValue(QDBusObjectPath(QStringLiteral("/x"))), qlonglong(1)})),
              QStringLiteral("answered"));
    EXPECT_TRUE(commands.empty());
    EXPECT_TRUE(told.empty());
}

TEST_F(MprisPlayerTest, goesFromStationToStationAndRound) {
    mpris->setStations({{QStringLiteral("a"), QStringLiteral("First")},
                        {QStringLiteral("b"), QStringLiteral("Second")},
                        {QStringLiteral("c"), QStringLiteral("A third")}});
    std::vector<QString> requested;
    mpris->onStationRequested = [&](const QString& key) { requested.push_back(key); };
    EXPECT_EQ(get(player, QStringLiteral("CanGoNext")), false) << "from which one?";
    mpris->setStation(QStringLiteral("c"), QStringLiteral("A third"));
    settle();
    ASSERT_FALSE(told.empty());
    EXPECT_EQ(get(player, QStringLiteral("CanGoNext")), true);
    EXPECT_EQ(errorOf(call(service, path, player, QStringLiteral("Next"))), QStringLiteral("answered"));
    mpris->setStation(QStringLiteral("a"), QStringLiteral("First"));
    EXPECT_EQ(errorOf(call(service, path, player, QStringLiteral("Previous"))), QStringLiteral("answered"));
    EXPECT_EQ(errorOf(call(service, path, player, QStringLiteral("Next"))), QStringLiteral("answered"));
    EXPECT_EQ(requested,
              (std::vector<QString>{QStringLiteral("a"), QStringLiteral("c"), QStringLiteral("b")}));
}

TEST_F(MprisPlayerTest, theAlbumIsTheStation) {
    mpris->setStations({{QStringLiteral("a"), QStringLiteral("First")}});
    mpris->setStation(QStringLiteral("a"), QStringLiteral("First"));
    EXPECT_EQ(metadata(), QVariantMap()) << "no song, no album";
    mpris->setNowPlayingInfo({QStringLiteral("Song"), std::nullopt, true});
    EXPECT_EQ(metadata().value(QStringLiteral("xesam:album")), QStringLiteral("First"));
    EXPECT_FALSE(metadata().contains(QStringLiteral("xesam:artist")));
}

TEST_F(MprisPlayerTest, listsTheStationsAsPlaylists) {
    mpris->setStations({{QStringLiteral("a"), QStringLiteral("First")},
                        {QStringLiteral("b"), QStringLiteral("Second")},
                        {QStringLiteral("c"), QStringLiteral("A third")}});
    mpris->setStation(QStringLiteral("b"), QStringLiteral("Second"));
    const auto lists = QStringLiteral("org.mpris.MediaPlayer2.Playlists");
    EXPECT_EQ(get(lists, QStringLiteral("PlaylistCount")), 3U);
    const auto active = qdbus_cast<MprisMaybePlaylist>(get(lists, QStringLiteral("ActivePlaylist")));
    EXPECT_TRUE(active.isThere);
    EXPECT_EQ(active.playlist.name, QStringLiteral("Second"));
    const auto names = [&](uint first, uint most, const char* order, bool isReversed) {
        const auto reply = call(service, path, lists, QStringLiteral("GetPlaylists"),
                                {first, most, QString::fromLatin1(order), isReversed});
        QStringList found;
        for (const auto& one : qdbus_cast<QList<MprisPlaylist>>(reply.arguments().value(0)))
            found << one.name;
        return found.join(QLatin1Char(','));
    };
    EXPECT_EQ(names(0, 100, "UserDefined", false), QStringLiteral("First,Second,A third"));
    EXPECT_EQ(names(0, 100, "Alphabetical", true), QStringLiteral("Second,First,A third"));
    EXPECT_EQ(names(1, 1, "UserDefined", false), QStringLiteral("Second"));
    EXPECT_EQ(names(7, std::numeric_limits<uint>::max(), "UserDefined", false), QString());
    QString requested;
    mpris->onPlayStationRequested = [&](const QString& key) { requested = key; };
    const auto activate = [&](const QDBusObjectPath& id) {
        return errorOf(
            call(service, path, lists, QStringLiteral("ActivatePlaylist"), {QVariant::fromValue(id)}));
    };
    EXPECT_EQ(activate(active.playlist.id), QStringLiteral("answered"));
    EXPECT_EQ(requested, QStringLiteral("b"));
    EXPECT_EQ(activate(QDBusObjectPath(QStringLiteral("/x"))),
              QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"));
}

TEST_F(MprisPlayerTest, ofManyCallsAtOnceSomeAreErrors) {
    constexpr int count = 200;
    std::vector<std::unique_ptr<QDBusPendingCallWatcher>> answers;
    const auto question = QDBusMessage::createMethodCall(service, path, player, QStringLiteral("PlayPause"));
    for (int i = 0; i < count; ++i)
        answers.push_back(std::make_unique<QDBusPendingCallWatcher>(peer->connection().asyncCall(question)));
    ASSERT_TRUE(spinUntil([&] {
        return std::all_of(answers.begin(), answers.end(), [](const auto& one) { return one->isFinished(); });
    }));
    const auto refused = std::count_if(answers.begin(), answers.end(), [](const auto& one) {
        return one->error().name() == QStringLiteral("org.freedesktop.DBus.Error.LimitsExceeded");
    });
    EXPECT_EQ(commands.size() + static_cast<std::size_t>(refused), std::size_t{count});
    EXPECT_LT(commands.size(), 100U) << "nobody presses keys so fast";
    EXPECT_TRUE(spinUntil([&] {
        return errorOf(call(service, path, player, QStringLiteral("Play"))) == QStringLiteral("answered");
    })) << "and soon the next one is heard again";
}

TEST_F(MprisPlayerTest, refusesToOpenAddresses) {
    EXPECT_EQ(errorOf(call(service, path, player, QStringLiteral("OpenUri"), {QStringLiteral("https://x/")})),
              QStringLiteral("org.freedesktop.DBus.Error.NotSupported"));
    EXPECT_TRUE(commands.empty());
    EXPECT_TRUE(told.empty());
}

TEST_F(MprisPlayerTest, answersMistakesWithTheRightErrors) {
    const auto prefix = QStringLiteral("org.freedesktop.DBus.Error.");
    const auto get = QStringLiteral("Get");
    const auto identity = QStringLiteral("Identity");
    EXPECT_EQ(errorOf(call(service, path, player, QStringLiteral("Rewind"))),
              prefix + QStringLiteral("UnknownMethod"));
    EXPECT_EQ(errorOf(call(service, path, QStringLiteral("org.example.X"), QStringLiteral("Play"))),
              prefix + QStringLiteral("UnknownMethod"));
    EXPECT_EQ(errorOf(call(service, path, player, QStringLiteral("Seek"), {QStringLiteral("far")})),
              prefix + QStringLiteral("InvalidArgs"));
    EXPECT_EQ(errorOf(call(service, path, player, QStringLiteral("Play"), {1})),
              prefix + QStringLiteral("InvalidArgs"));
    EXPECT_EQ(errorOf(call(service, path, properties, get, {root, QStringLiteral("Nonsense")})),
              prefix + QStringLiteral("UnknownProperty"));
    EXPECT_EQ(errorOf(call(service, path, properties, get, {player, identity})),
              prefix + QStringLiteral("UnknownProperty"));
    EXPECT_EQ(errorOf(call(service, path, properties, get, {QStringLiteral("org.example.X"), identity})),
              prefix + QStringLiteral("UnknownInterface"));
    EXPECT_EQ(
        errorOf(call(service, path, properties, QStringLiteral("GetAll"), {QStringLiteral("org.example.X")})),
        prefix + QStringLiteral("UnknownInterface"));
    EXPECT_EQ(errorOf(call(service, path, properties, get, {1})), prefix + QStringLiteral("InvalidArgs"));
    EXPECT_EQ(errorOf(call(service, path, properties, QStringLiteral("Take"))),
              prefix + QStringLiteral("UnknownMethod"));
    EXPECT_EQ(errorOf(set(QStringLiteral("CanSeek"), true)), prefix + QStringLiteral("PropertyReadOnly"));
    EXPECT_EQ(errorOf(set(QStringLiteral("Metadata"), QVariantMap())),
              prefix + QStringLiteral("PropertyReadOnly"));
    EXPECT_EQ(errorOf(set(QStringLiteral("Volume"), QStringLiteral("loud"))),
              prefix + QStringLiteral("InvalidArgs"));
    EXPECT_EQ(errorOf(set(QStringLiteral("Loudness"), 1.0)), prefix + QStringLiteral("UnknownProperty"));
    EXPECT_EQ(errorOf(call(service, QStringLiteral("/elsewhere"), player, QStringLiteral("Play"))),
              prefix + QStringLiteral("UnknownObject"));
    EXPECT_TRUE(commands.empty());
}

TEST_F(MprisPlayerTest, answersACallThatNamesNoInterface) {
    EXPECT_EQ(errorOf(call(service, path, QString(), QStringLiteral("Play"))), QStringLiteral("answered"));
    EXPECT_EQ(commands, std::vector<QString>{QStringLiteral("play")});
    EXPECT_EQ(errorOf(call(service, path, QString(), QStringLiteral("Rewind"))),
              QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"));
}

TEST_F(MprisPlayerTest, showsTheSong) {
    EXPECT_EQ(metadata(), QVariantMap());
    mpris->setNowPlayingInfo({QStringLiteral("Chanteur – Été & <b>"), std::nullopt, true});
    auto map = metadata();
    EXPECT_EQ(map.value(QStringLiteral("xesam:title")), QStringLiteral("Chanteur – Été & <b>"));
    EXPECT_EQ(map.value(QStringLiteral("zofra:isLiveStream")), true);
    EXPECT_FALSE(map.contains(QStringLiteral("xesam:artist")));
    EXPECT_FALSE(map.contains(QStringLiteral("mpris:length")));
    const auto first = qvariant_cast<QDBusObjectPath>(map.value(QStringLiteral("mpris:trackid"))).path();
    EXPECT_TRUE(first.startsWith(QStringLiteral("/be/zofra/ZofraZofra/track/"))) << first.toStdString();

    mpris->setNowPlayingInfo({QStringLiteral("B"), QStringLiteral("A"), true});
    map = metadata();
    EXPECT_EQ(map.value(QStringLiteral("xesam:artist")).toStringList(), QStringList{QStringLiteral("A")});
    EXPECT_NE(qvariant_cast<QDBusObjectPath>(map.value(QStringLiteral("mpris:trackid"))).path(), first);

    mpris->setNowPlayingInfo({QStringLiteral("B"), QString(), false});
    map = metadata();
    EXPECT_FALSE(map.contains(QStringLiteral("xesam:artist"))) << "an empty artist is left out";
    EXPECT_EQ(map.value(QStringLiteral("zofra:isLiveStream")), false);
}

TEST_F(MprisPlayerTest, tellsExactlyWhatChanged) {
    using State = MprisPlayer::PlaybackState;
    mpris->setPlaybackState(State::stopped);
    mpris->setVolume(0);
    settle();
    EXPECT_TRUE(told.empty()) << "nothing has changed yet";

    mpris->setPlaybackState(State::playing);
    mpris->setPlaybackState(State::playing);
    mpris->setPlaybackState(State::paused);
    mpris->setVolume(static_cast<double>(0.35F));
    mpris->setVolume(0.35);
    const NowPlayingInfo info{QStringLiteral("S"), std::nullopt, true};
    mpris->setNowPlayingInfo(info);
    mpris->setNowPlayingInfo(info);
    settle();
    ASSERT_EQ(told.size(), 4U);
    EXPECT_EQ(told[0], (QVariantMap{{QStringLiteral("PlaybackStatus"), QStringLiteral("Playing")}}));
    EXPECT_EQ(told[1], (QVariantMap{{QStringLiteral("PlaybackStatus"), QStringLiteral("Paused")}}));
    EXPECT_EQ(told[2], (QVariantMap{{QStringLiteral("Volume"), 0.35}}));
    EXPECT_EQ(told[3].keys(), QStringList{QStringLiteral("Metadata")});
    EXPECT_EQ(qdbus_cast<QVariantMap>(told[3].first()).value(QStringLiteral("xesam:title")),
              QStringLiteral("S"));
    EXPECT_EQ(toldInterfaces, std::vector<QString>(4, player));
}

TEST_F(MprisPlayerTest, asksForTheVolumeThatAClientSets) {
    std::vector<double> requested;
    mpris->onVolumeRequested = [&](double volume) {
        requested.push_back(volume);
        mpris->setVolume(volume);
    };
    EXPECT_EQ(errorOf(set(QStringLiteral("Volume"), 0.25)), QStringLiteral("answered"));
    EXPECT_EQ(get(player, QStringLiteral("Volume")), 0.25);
    EXPECT_EQ(errorOf(set(QStringLiteral("Volume"), 1.5)), QStringLiteral("answered"));
    EXPECT_EQ(errorOf(set(QStringLiteral("Volume"), -1.0)), QStringLiteral("answered"));
    EXPECT_EQ(errorOf(set(QStringLiteral("Volume"), std::numeric_limits<double>::quiet_NaN())),
              QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"));
    EXPECT_EQ(requested, (std::vector{0.25, 1.0, 0.0}));
}

TEST_F(MprisPlayerTest, hasOneRateAndPausesAtNone) {
    EXPECT_EQ(errorOf(set(QStringLiteral("Rate"), 2.0)), QStringLiteral("answered"));
    EXPECT_TRUE(commands.empty());
    EXPECT_EQ(get(player, QStringLiteral("Rate")), 1.0);
    EXPECT_EQ(errorOf(set(QStringLiteral("Rate"), 0.0)), QStringLiteral("answered"));
    EXPECT_EQ(commands, std::vector<QString>{QStringLiteral("pause")});
}

TEST_F(MprisPlayerTest, raisesAndQuitsAfterItsAnswer) {
    EXPECT_EQ(get(root, QStringLiteral("CanRaise")), false);
    EXPECT_EQ(errorOf(call(service, path, root, QStringLiteral("Raise"))), QStringLiteral("answered"));
    QStringList done;
    mpris->onRaise = [&] { done += QStringLiteral("raise"); };
    mpris->onQuit = [&] {
        done += QStringLiteral("quit");
        mpris.reset(); // As when the program ends there and then.
    };
    EXPECT_EQ(get(root, QStringLiteral("CanRaise")), true);
    EXPECT_EQ(errorOf(call(service, path, root, QStringLiteral("Raise"))), QStringLiteral("answered"));
    EXPECT_EQ(errorOf(call(service, path, root, QStringLiteral("Quit"))), QStringLiteral("answered"));
    EXPECT_EQ(done, (QStringList{QStringLiteral("raise"), QStringLiteral("quit")}));
    EXPECT_EQ(errorOf(call(service, path, root, QStringLiteral("Raise"))),
              QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown"));
}

TEST_F(MprisPlayerTest, comesBackWithTheBus) {
    mpris->setNowPlayingInfo({QStringLiteral("before"), std::nullopt, true});
    loseBus();
    mpris->setNowPlayingInfo({QStringLiteral("meanwhile"), std::nullopt, true});
    mpris->setPlaybackState(MprisPlayer::PlaybackState::playing);
    bringBusBack();
    listen();
    ASSERT_TRUE(waitForName());
    EXPECT_EQ(metadata().value(QStringLiteral("xesam:title")), QStringLiteral("meanwhile"));
    EXPECT_EQ(get(player, QStringLiteral("PlaybackStatus")), QStringLiteral("Playing"));
    EXPECT_EQ(errorOf(call(service, path, player, QStringLiteral("Play"))), QStringLiteral("answered"));
    told.clear();
    mpris->setPlaybackState(MprisPlayer::PlaybackState::paused);
    settle();
    EXPECT_EQ(told.size(), 1U);
}

TEST_F(MprisPlayerTest, takesAnotherNameWhenItsOwnIsTaken) {
    mpris.reset();
    // Answered after our giving it back, which was sent before on the same connection.
    const auto mine = service + QStringLiteral(".test");
    ASSERT_EQ(dbus::requestNameNow(*bus->connection(), mine, std::chrono::seconds(30)),
              dbus::NameRequest::owned);
    ASSERT_EQ(dbus::requestNameNow(peer->connection(), service, std::chrono::seconds(30)),
              dbus::NameRequest::owned);
    const MprisPlayer second(*bus);
    const auto other =
        service + QStringLiteral(".instance") + QString::number(QCoreApplication::applicationPid());
    const DBusNameOwner owner(peer->connection(), other);
    ASSERT_TRUE(spinUntil([&] { return !owner.owner().isEmpty(); }));
    EXPECT_EQ(owner.owner(), bus->connection()->baseService());
}

} // namespace
} // namespace zofra
