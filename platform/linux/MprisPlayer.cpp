// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/MprisPlayer.h"

#include "platform/linux/DBusCalls.h"
#include "platform/linux/DBusExportedObject.h"

#include <QCoreApplication>
#include <QDBusObjectPath>
#include <QStringList>
#include <QVariantMap>

#include <algorithm>
#include <cmath>

namespace zofra {
namespace {

using dbus::Answer;
using dbus::Error;
using dbus::Interface;
using dbus::Method;
using dbus::Property;

const auto busName = QStringLiteral("org.mpris.MediaPlayer2.zofrazofra");
const auto objectPath = QStringLiteral("/org/mpris/MediaPlayer2");

Property constant(const QString& name, const QString& signature, const QVariant& value) {
    return {name, signature, [value] { return value; }, {}, Property::Changes::never};
}

/// A method that is part of the interface and does nothing here.
Method inert(const QString& name, std::vector<dbus::Argument> in = {}) {
    return {name, std::move(in), {}, [](const QVariantList&) { return Answer(); }};
}

Method openUri() {
    // No kind of address is supported, and whoever tries one anyway should hear of it.
    return {QStringLiteral("OpenUri"),
            {{QStringLiteral("Uri"), QStringLiteral("s")}},
            {},
            [](const QVariantList&) {
                return Answer{{},
                              Error{QStringLiteral("org.freedesktop.DBus.Error.NotSupported"),
                                    QStringLiteral("Only the stations of the catalogue can be played")},
                              {}};
            }};
}

/// A handler's outcome as an answer; without a handler nothing is done.
Answer run(const RemoteCommandCenter::Handler& handler) {
    if (handler && handler() == RemoteCommandStatus::commandFailed)
        return {
            {}, Error{QStringLiteral("org.freedesktop.DBus.Error.Failed"), QStringLiteral("It failed")}, {}};
    return {};
}

/// Free of the noise that a volume gets on its way from a 32-bit number.
double rounded(double volume) {
    return std::round(std::clamp(volume, 0.0, 1.0) * 1e6) / 1e6;
}

} // namespace

MprisPlayer::MprisPlayer(SessionBus& bus)
    : m_bus(bus)
    , m_object(std::make_unique<dbus::ExportedObject>(
          objectPath, std::vector<Interface>{rootInterface(), playerInterface()})) {
    m_connected = bus.observeConnected([this](const QDBusConnection& connection) { appearOn(connection); });
    m_disconnected = bus.observeDisconnected([this] {
        m_object->connectionLost();
        m_ownedName.clear();
    });
}

MprisPlayer::~MprisPlayer() {
    const auto connection = m_bus.connection();
    if (connection && !m_ownedName.isEmpty())
        dbus::releaseName(*connection, m_ownedName);
}

void MprisPlayer::appearOn(const QDBusConnection& connection) {
    // First the object, so that whoever sees the name finds it.
    m_object->exportOn(connection);
    requestName(connection, busName);
}

void MprisPlayer::requestName(const QDBusConnection& connection, const QString& name) {
    dbus::requestName(connection, name, m_object.get(), [this, connection, name](dbus::NameRequest result) {
        const auto now = m_bus.connection();
        if (!now || now->name() != connection.name())
            return;
        if (result == dbus::NameRequest::owned)
            m_ownedName = name;
        else if (result == dbus::NameRequest::taken && name == busName)
            // Another player of this kind: several are told apart by a suffix.
            requestName(connection, busName + QStringLiteral(".instance") +
                                        QString::number(QCoreApplication::applicationPid()));
    });
}

void MprisPlayer::setNowPlayingInfo(const NowPlayingInfo& info) {
    if (m_info == info)
        return;
    m_info = info;
    ++m_track;
    m_object->tellChangedProperties();
}

void MprisPlayer::setTogglePlayPauseHandler(Handler handler) {
    m_toggle = std::move(handler);
}

void MprisPlayer::setPlayHandler(Handler handler) {
    m_play = std::move(handler);
    m_object->tellChangedProperties();
}

void MprisPlayer::setPauseHandler(Handler handler) {
    m_pause = std::move(handler);
    m_object->tellChangedProperties();
}

void MprisPlayer::setPlaybackState(PlaybackState state) {
    m_state = state;
    m_object->tellChangedProperties();
}

void MprisPlayer::setVolume(double volume) {
    m_volume = rounded(volume);
    m_object->tellChangedProperties();
}

QString MprisPlayer::playbackStatus() const {
    switch (m_state) {
    case PlaybackState::playing:
        return QStringLiteral("Playing");
    case PlaybackState::paused:
        return QStringLiteral("Paused");
    case PlaybackState::stopped:
        break;
    }
    return QStringLiteral("Stopped");
}

QVariantMap MprisPlayer::metadata() const {
    if (!m_info)
        return {};
    QVariantMap map{
        {QStringLiteral("mpris:trackid"),
         QVariant::fromValue(QDBusObjectPath(QStringLiteral("/be/zofra/ZofraZofra/track/%1").arg(m_track)))},
        {QStringLiteral("xesam:title"), m_info->title},
        {QStringLiteral("zofra:isLiveStream"), m_info->isLiveStream},
    };
    if (m_info->artist && !m_info->artist->isEmpty())
        map.insert(QStringLiteral("xesam:artist"), QStringList{*m_info->artist});
    return map;
}

Interface MprisPlayer::rootInterface() {
    const auto canRaise = [this] { return QVariant(static_cast<bool>(onRaise)); };
    const auto raise = [this](const QVariantList&) { return Answer{{}, {}, onRaise}; };
    // The answer goes out before everything ends.
    const auto quit = [this](const QVariantList&) { return Answer{{}, {}, onQuit}; };
    const auto text = QStringLiteral("s");
    const auto flag = QStringLiteral("b");
    return {QStringLiteral("org.mpris.MediaPlayer2"),
            {{QStringLiteral("Raise"), {}, {}, raise}, {QStringLiteral("Quit"), {}, {}, quit}},
            {},
            {constant(QStringLiteral("CanQuit"), flag, true),
             {QStringLiteral("CanRaise"), flag, canRaise, {}, Property::Changes::areTold},
             constant(QStringLiteral("HasTrackList"), flag, false),
             constant(QStringLiteral("Identity"), text, QStringLiteral("Zofra Zofra")),
             constant(QStringLiteral("DesktopEntry"), text, QStringLiteral("be.zofra.ZofraZofra")),
             constant(QStringLiteral("SupportedUriSchemes"), QStringLiteral("as"), QStringList()),
             constant(QStringLiteral("SupportedMimeTypes"), QStringLiteral("as"), QStringList())}};
}

Interface MprisPlayer::playerInterface() {
    const auto method = [](const QString& name, std::function<Answer()> act) {
        return Method{name, {}, {}, [act = std::move(act)](const QVariantList&) { return act(); }};
    };
    const auto setRate = [this](const QVariant& rate) -> std::optional<Error> {
        // There is one rate; asking for none means a pause.
        return rate.toDouble() == 0 ? run(m_pause).error : std::nullopt;
    };
    const auto setVolume = [this](const QVariant& volume) -> std::optional<Error> {
        if (!std::isfinite(volume.toDouble()))
            return Error{QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"),
                         QStringLiteral("Volume is a finite number")};
        if (onVolumeRequested)
            onVolumeRequested(std::clamp(volume.toDouble(), 0.0, 1.0));
        return std::nullopt;
    };
    const auto flag = QStringLiteral("b");
    const auto number = QStringLiteral("d");
    const auto time = QStringLiteral("x");
    using Changes = Property::Changes;
    return {
        QStringLiteral("org.mpris.MediaPlayer2.Player"),
        {inert(QStringLiteral("Next")), inert(QStringLiteral("Previous")),
         method(QStringLiteral("Pause"), [this] { return run(m_pause); }),
         method(QStringLiteral("PlayPause"), [this] { return run(m_toggle); }),
         method(QStringLiteral("Stop"), [this] { return run(m_pause); }),
         method(QStringLiteral("Play"), [this] { return run(m_play); }),
         inert(QStringLiteral("Seek"), {{QStringLiteral("Offset"), time}}),
         inert(QStringLiteral("SetPosition"),
               {{QStringLiteral("TrackId"), QStringLiteral("o")}, {QStringLiteral("Position"), time}}),
         openUri()},
        {{QStringLiteral("Seeked"), {{QStringLiteral("Position"), time}}}},
        {{QStringLiteral("PlaybackStatus"),
          QStringLiteral("s"),
          [this] { return QVariant(playbackStatus()); },
          {},
          Changes::areTold},
         {QStringLiteral("Rate"), number, [] { return QVariant(1.0); }, setRate, Changes::areTold},
         {QStringLiteral("Metadata"),
          QStringLiteral("a{sv}"),
          [this] { return QVariant(metadata()); },
          {},
          Changes::areTold},
         {QStringLiteral("Volume"), number, [this] { return QVariant(m_volume); }, setVolume,
          Changes::areTold},
         {QStringLiteral("Position"), time, [] { return QVariant(qlonglong(0)); }, {}, Changes::areNotTold},
         constant(QStringLiteral("MinimumRate"), number, 1.0),
         constant(QStringLiteral("MaximumRate"), number, 1.0),
         constant(QStringLiteral("CanGoNext"), flag, false),
         constant(QStringLiteral("CanGoPrevious"), flag, false),
         {QStringLiteral("CanPlay"),
          flag,
          [this] { return QVariant(static_cast<bool>(m_play)); },
          {},
          Changes::areTold},
         {QStringLiteral("CanPause"),
          flag,
          [this] { return QVariant(static_cast<bool>(m_pause)); },
          {},
          Changes::areTold},
         constant(QStringLiteral("CanSeek"), flag, false),
         {QStringLiteral("CanControl"), flag, [] { return QVariant(true); }, {}, Changes::areNotTold}}};
}

} // namespace zofra
