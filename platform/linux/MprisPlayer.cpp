// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/MprisPlayer.h"

#include "platform/linux/DBusCalls.h"
#include "platform/linux/DBusExportedObject.h"
#include "platform/linux/IconTheme.h"

#include <QCoreApplication>
#include <QDBusObjectPath>
#include <QStringList>
#include <QUrl>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace zofra {
namespace {

using dbus::Answer;
using dbus::constant;
using dbus::Error;
using dbus::Interface;
using dbus::Method;
using dbus::Property;

const auto busName = u"org.mpris.MediaPlayer2.zofrazofra"_qs;
const auto objectPath = u"/org/mpris/MediaPlayer2"_qs;

/// In the order of `MprisPlayer::PlaybackState`.
constexpr std::array statusNames{QLatin1String("Stopped"), QLatin1String("Paused"), QLatin1String("Playing")};

/// A method that is part of the interface and does nothing here.
Method inert(const char* name, const char* in = "") {
    return {name, in, "", [](const QVariantList&) { return Answer(); }};
}

Method openUri() {
    // No kind of address is supported, and whoever tries one anyway should hear of it.
    return {"OpenUri", "Uri:s", "", [](const QVariantList&) {
                return dbus::refused("NotSupported", u"Only the stations of the catalogue can be played"_qs);
            }};
}

/// A handler's outcome as an answer; without a handler nothing is done.
Answer run(const RemoteCommandCenter::Handler& handler) {
    if (handler && handler() == RemoteCommandStatus::commandFailed)
        return dbus::refused("Failed", u"It failed"_qs);
    return {};
}

/// The program's own picture, as clients find it; empty where there is none.
QString iconUrl() {
    const QString file = icontheme::programIcon();
    return file.isEmpty() ? QString() : QUrl::fromLocalFile(file).toString(QUrl::FullyEncoded);
}

/// Free of the noise that a volume gets on its way from a 32-bit number.
double rounded(double volume) {
    return std::round(std::clamp(volume, 0.0, 1.0) * 1e6) / 1e6;
}

} // namespace

MprisPlayer::MprisPlayer(SessionBus& bus)
    : m_bus(bus)
    , m_icon(iconUrl())
    , m_object(std::make_unique<dbus::ExportedObject>(
          objectPath, std::vector<Interface>{rootInterface(), playerInterface(), m_playlists.interface()})) {
    m_connected = bus.observeConnected([this](const QDBusConnection& connection) { appearOn(connection); });
    m_playlists.onChosen = [this](const QString& key) {
        if (onPlayStationRequested)
            onPlayStationRequested(key);
    };
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
            requestName(connection,
                        busName + u".instance"_qs + QString::number(QCoreApplication::applicationPid()));
    });
}

void MprisPlayer::setNowPlayingInfo(const NowPlayingInfo& info) {
    if (m_info == info)
        return;
    m_info = info;
    ++m_track;
    m_object->tellChangedProperties();
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
    if (std::exchange(m_state, state) != state)
        m_object->tellChangedProperties();
}

void MprisPlayer::setVolume(double volume) {
    const double shown = rounded(volume);
    if (std::exchange(m_volume, shown) != shown)
        m_object->tellChangedProperties();
}

void MprisPlayer::setStations(const std::vector<MprisPlaylists::Entry>& stations) {
    m_playlists.setEntries(stations, m_icon);
    m_object->tellChangedProperties();
}

void MprisPlayer::setStation(const QString& key, const QString& name) {
    if (m_station.key == key && m_station.name == name)
        return;
    m_station = {key, name};
    m_playlists.setActive(key);
    m_object->tellChangedProperties();
}

Answer MprisPlayer::skip(int distance) {
    const QString key = m_playlists.neighbour(distance);
    if (!key.isEmpty() && onStationRequested)
        onStationRequested(key);
    return {};
}

QVariantMap MprisPlayer::metadata() const {
    if (!m_info)
        return {};
    QVariantMap map{
        {u"mpris:trackid"_qs,
         QVariant::fromValue(QDBusObjectPath(u"/be/zofra/ZofraZofra/track/%1"_qs.arg(m_track)))},
        {u"xesam:title"_qs, m_info->title},
        {u"zofra:isLiveStream"_qs, m_info->isLiveStream},
    };
    if (!m_station.name.isEmpty())
        map.insert(u"xesam:album"_qs, m_station.name);
    if (!m_icon.isEmpty())
        map.insert(u"mpris:artUrl"_qs, m_icon);
    if (m_info->artist && !m_info->artist->isEmpty())
        map.insert(u"xesam:artist"_qs, QStringList{*m_info->artist});
    return map;
}

Interface MprisPlayer::rootInterface() {
    const auto canRaise = [this] { return QVariant(static_cast<bool>(onRaise)); };
    const auto raise = [this](const QVariantList&) { return Answer{.afterwards = onRaise}; };
    // The answer goes out before everything ends.
    const auto quit = [this](const QVariantList&) { return Answer{.afterwards = onQuit}; };
    return {"org.mpris.MediaPlayer2",
            {{"Raise", "", "", raise}, {"Quit", "", "", quit}},
            {},
            {constant("CanQuit", "b", true),
             {"CanRaise", "b", canRaise},
             constant("HasTrackList", "b", false),
             constant("Identity", "s", u"Zofra Zofra"_qs),
             constant("DesktopEntry", "s", u"be.zofra.ZofraZofra"_qs),
             constant("SupportedUriSchemes", "as", QStringList()),
             constant("SupportedMimeTypes", "as", QStringList())}};
}

Interface MprisPlayer::playerInterface() {
    const auto method = [this](const char* name, std::function<Answer()> act) {
        return Method{name, "", "", [this, act = std::move(act)](const QVariantList&) {
                          return dbus::withinLimit(m_acts, act);
                      }};
    };
    const auto setRate = [this](const QVariant& rate) -> std::optional<Error> {
        // There is one rate; asking for none means a pause.
        return rate.toDouble() == 0 ? run(m_pause).error : std::nullopt;
    };
    const auto setVolume = [this](const QVariant& volume) -> std::optional<Error> {
        if (!std::isfinite(volume.toDouble()))
            return dbus::error("InvalidArgs", u"Volume is a finite number"_qs);
        if (onVolumeRequested)
            onVolumeRequested(std::clamp(volume.toDouble(), 0.0, 1.0));
        return std::nullopt;
    };
    const auto status = [this] { return QVariant(statusNames[static_cast<std::size_t>(m_state)]); };
    const auto canSkip = [this] { return QVariant(!m_playlists.neighbour(1).isEmpty()); };
    const auto has = [](const Handler& handler) {
        return [&handler] { return QVariant(static_cast<bool>(handler)); };
    };
    using Changes = Property::Changes;
    return {"org.mpris.MediaPlayer2.Player",
            {method("Next", [this] { return skip(1); }), method("Previous", [this] { return skip(-1); }),
             method("Pause", [this] { return run(m_pause); }),
             method("PlayPause", [this] { return run(m_toggle); }),
             method("Stop", [this] { return run(m_pause); }), method("Play", [this] { return run(m_play); }),
             inert("Seek", "Offset:x"), inert("SetPosition", "TrackId:o Position:x"), openUri()},
            {{"Seeked", "Position:x"}},
            {{"PlaybackStatus", "s", status},
             {"Rate", "d", [] { return QVariant(1.0); }, Changes::areTold, setRate},
             {"Metadata", "a{sv}", [this] { return QVariant(metadata()); }},
             {"Volume", "d", [this] { return QVariant(m_volume); }, Changes::areTold, setVolume},
             {"Position", "x", [] { return QVariant(qlonglong(0)); }, Changes::areNotTold},
             constant("MinimumRate", "d", 1.0),
             constant("MaximumRate", "d", 1.0),
             {"CanGoNext", "b", canSkip},
             {"CanGoPrevious", "b", canSkip},
             {"CanPlay", "b", has(m_play)},
             {"CanPause", "b", has(m_pause)},
             constant("CanSeek", "b", false),
             {"CanControl", "b", [] { return QVariant(true); }, Changes::areNotTold}}};
}

} // namespace zofra
