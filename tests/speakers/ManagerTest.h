// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/RoomCache.h"
#include "speakers/SonosManager.h"
#include "tests/speakers/Samples.h"
#include "tests/support/World.h"

#include <QMap>

#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace zofra::test {

/// A house of players that answers requests: descriptions and topology at the addresses of `players`, and
/// every control request with `controlStatus`.
struct House {
    struct Player {
        QString id;
        QString roomName;
        QString model = QStringLiteral("Sonos One");
    };
    QMap<int, Player> players;
    QStringList groups;
    int controlStatus = 200;

    [[nodiscard]] HttpResult answer(const HttpRequest& request) const {
        const auto host = request.url.host().section(u'.', 3).toInt();
        if (actionOf(request) == QLatin1String("GetZoneGroupState"))
            return groups.isEmpty() ? answered(500) : answered(200, householdAnswer(groups));
        if (request.method == "POST")
            return answered(controlStatus);
        if (!players.contains(host))
            return failed(HttpError::Code::timedOut);
        const auto player = players.value(host);
        return answered(200, description(player.id, player.roomName, player.model));
    }
};

/// A manager in a world of fakes. Requests are answered at once by `house` until `holdRequests`; from then on
/// they stay open in `http`.
class ManagerTest : public ::testing::Test, protected World {
protected:
    ManagerTest() { answerRequests(); }

    void answerRequests() {
        http.automatic = [this](const HttpRequest& request) { return house.answer(request); };
    }
    void holdRequests() { http.automatic = nullptr; }

    SonosManager& start(bool automaticallyDiscover) {
        manager = std::make_unique<SonosManager>(
            automaticallyDiscover,
            SonosManager::Environment{
                {http, queue, tasks, network, log}, defaults, languages, localPlayer, hosts});
        manager->onRoomsUpdated = [this](const QList<SonosRoom>& rooms) { updates.append(rooms); };
        manager->onPlaybackStateChanged = [this](bool playing) { states.append(playing); };
        return *manager;
    }

    /// A manager without automatic discovery that has found the players of `house`; nothing of that is left
    /// in the records.
    SonosManager& startWithHouse() {
        network.addInterface(QStringLiteral("eth0"), QStringLiteral("10.0.0.2"), QString());
        for (const int host : house.players.keys())
            network.scripts[QStringLiteral("10.0.0.2")].datagrams.push_back(
                ssdpAnswer(descriptionUrl(host).toString()));
        start(false).discoverDevices(false);
        tasks.runAll();
        queue.drain();
        http.requests.clear();
        log.lines.clear();
        updates.clear();
        return *manager;
    }

    /// "Play 10.0.0.1, Stop 10.0.0.2": the requests since the last call.
    QString requests() {
        QStringList texts;
        for (const auto& request : http.requests)
            texts.append(summary(request));
        http.requests.clear();
        return texts.join(QStringLiteral(", "));
    }

    /// Every room's name or title.
    QStringList titles() const {
        QStringList result;
        for (const auto& room : manager->rooms.get())
            result.append(manager->displayTitle(room));
        return result;
    }

    House house;
    FakeDefaultsStore languageDefaults;
    LanguageManager languages{languageDefaults, {}};
    FakeDefaultsStore playerDefaults;
    RadioPlayer localPlayer{
        RadioPlayer::Environment{players, playerDefaults, queue, nowPlaying, commands, wake, output, hosts}};
    std::unique_ptr<SonosManager> manager;
    QList<QList<SonosRoom>> updates;
    QList<bool> states;
};

} // namespace zofra::test
