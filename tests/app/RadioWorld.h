// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RadioControls.h"
#include "app/RadioStateSource.h"
#include "metadata/RadioViewModel.h"
#include "playback/RadioPlayer.h"
#include "speakers/SonosManager.h"
#include "stations/LanguageManager.h"
#include "tests/support/World.h"

namespace zofra::test {

/// What the controls move, real, over fakes of what is outside of the program.
class RadioWorld : public World {
public:
    /// Whether the sources of what is on air have answered.
    enum class OnAir { known, loading };

    explicit RadioWorld(const QString& language = u"en"_qs, RadioStation station = RadioStation::qmusic,
                        OnAir onAir = OnAir::known)
        : World(FakeTaskPool::Mode::inPlace)
        , stored(rememberStation(station))
        , languages(defaults, {language})
        , player({players, defaults, queue, nowPlaying, commands, wake, output, hosts})
        , sonos(false, {{http, queue, tasks, network, log}, defaults, languages, player, hosts})
        , viewModel(station, http, queue.clock(), sockets.maker(), {queue, output, languages, hosts})
        , controls({viewModel, player, sonos, languages},
                   {queue, queue.clock(), defaults, workspace,
                    [this] { calls << u"updateStatusBarButton"_qs; }, [] {}, [] {}}) {
        if (onAir == OnAir::known)
            finishLoading();
    }

    RadioState state() { return RadioStateSource(queue, {viewModel, player, sonos, languages}).now(); }

    /// Lets the speaker manager find one player, in a room of its own, and forgets the requests it took.
    void findPlayer(const QString& id, const QString& roomName) {
        const QString url = QStringLiteral("http://192.0.2.7:1400/xml/device_description.xml");
        network.addInterface(QStringLiteral("eth0"), QStringLiteral("192.0.2.5"), QString());
        network.scripts[QStringLiteral("192.0.2.5")].datagrams = {
            "HTTP/1.1 200 OK\r\nLOCATION: " + url.toUtf8() +
            "\r\nST: urn:schemas-upnp-org:device:ZonePlayer:1\r\n\r\n"};
        const QByteArray description =
            QStringLiteral("<root><device><deviceType>urn:schemas-upnp-org:device:ZonePlayer:1</deviceType>"
                           "<UDN>uuid:%1</UDN><roomName>%2</roomName><modelName>Sonos One</modelName>"
                           "</device></root>")
                .arg(id, roomName.toHtmlEscaped())
                .toUtf8();
        http.automatic = [description](const HttpRequest& request) {
            const bool isDescription = request.url.path() == QLatin1String("/xml/device_description.xml");
            return HttpResponse{isDescription ? 200 : 500, isDescription ? description : QByteArray()};
        };
        sonos.discoverDevices(false);
        queue.drain();
        http.automatic = nullptr;
        http.requests.clear();
    }

    /// The SOAP actions sent so far, in order, each with the value it sets where that is a volume.
    QStringList soapActions() const {
        QStringList actions;
        for (const HttpRequest& request : http.requests) {
            for (const auto& [name, value] : request.headers) {
                if (name == "SOAPACTION")
                    actions << QString::fromUtf8(value).section(QLatin1Char('#'), 1).chopped(1);
            }
            const QString body = QString::fromUtf8(request.body);
            if (body.contains(QLatin1String("<DesiredVolume>")))
                actions.last() +=
                    QLatin1Char(' ') +
                    body.section(QLatin1String("<DesiredVolume>"), 1).section(QLatin1Char('<'), 0, 0);
        }
        return actions;
    }

    /// Paths of all requests sent so far.
    QStringList requestPaths() const {
        QStringList paths;
        for (const HttpRequest& request : http.requests)
            paths << request.url.path();
        return paths;
    }

    bool stored;
    LanguageManager languages;
    RadioPlayer player;
    SonosManager sonos;
    RadioViewModel viewModel;
    RadioControls controls;
    /// What happened, in order, as far as the test listens.
    QStringList calls;

private:
    /// The search answers that it knows nothing of the station.
    void finishLoading() {
        viewModel.fetchMetadata();
        const QString id = viewModel.currentStation.get().radioplayerId().value_or(QString());
        http.answer(200, QStringLiteral(R"({"results":{"%1":[]}})").arg(id).toUtf8());
        queue.drain();
        http.requests.clear();
    }
    bool rememberStation(RadioStation station) {
        RadioStation::setSavedStation(defaults, station);
        return true;
    }
};

} // namespace zofra::test
