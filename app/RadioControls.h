// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RadioObjects.h"
#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "platform/MainQueue.h"
#include "platform/Workspace.h"
#include "stations/AppLanguage.h"
#include "stations/RadioStation.h"

#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace zofra {

/// All acts there are: menu, panel, media keys, wheel and command line call nothing else. Main thread only.
class RadioControls {
public:
    /// What the program around the radio does. All of it outlives the controls.
    struct Shell {
        MainQueue& mainQueue;
        Clock clock;
        DefaultsStore& defaults;
        Workspace& workspace;
        /// Shows what an act has changed, at once.
        std::function<void()> refresh;
        std::function<void()> showPanel;
        std::function<void()> terminate;
    };

    RadioControls(const RadioObjects& objects, Shell shell);

    /// Plays or stops wherever the sound goes.
    void toggle();
    /// Plays wherever the sound goes, unless it plays already.
    void play() {
        if (!isPlaying())
            toggle();
    }
    /// Here and in the rooms it becomes silent.
    void stop() {
        if (isPlaying())
            toggle();
    }
    /// Stops after this time; nothing takes it back.
    void stopIn(std::chrono::seconds time);
    /// When it will stop by itself; absent when it will not.
    [[nodiscard]] std::optional<TimePoint> stopsAt() const { return m_stopsAt; }
    void chooseStation(RadioStation station);
    /// The same, and what is played here next is this station, not a stream that is still held.
    void chooseStationToHear(RadioStation station);
    /// So many stations on, or back, in their order; after the last comes the first.
    void chooseNeighbour(int distance);

    /// The speakers stop. Nothing plays here until it is asked for.
    void chooseThisComputer();
    /// The sound goes to the room with this id from now on, and plays there. An unknown room plays nothing.
    void chooseRoom(const QString& roomId);
    void chooseEverywhere();

    /// Sets the volume here, kept for the next start, and sends its percentage to the chosen room or rooms.
    /// Clamped to 0..1 here; a NaN counts as missing and becomes 1, and is sent nowhere.
    void setVolume(float volume);
    /// The same for what other programs send: a NaN is ignored, what lies outside of 0..1 is brought inside.
    void requestVolume(double volume);
    /// One notch of a wheel, one press of a key, in percent.
    static constexpr int volumeStep = 5;
    /// Louder or softer by so many percent; answers the percentage it is then.
    int changeVolume(int percent);

    /// Searches for players; each host of the local networks is asked where nothing answers by itself.
    void search();
    void chooseLanguage(AppLanguage language);
    /// Whether each new song is a message of the desktop's; kept.
    void announceSongs(bool isOn);
    /// The system's page about access to the local network.
    void openLocalNetworkSettings();
    void showPanel() { m_shell.showPanel(); }
    /// Here and in the rooms it becomes silent, then the program ends.
    void quit();

private:
    [[nodiscard]] bool isPlaying() const;

    RadioObjects m_objects;
    Shell m_shell;
    std::optional<TimePoint> m_stopsAt;
    std::unique_ptr<Timer> m_sleepTimer;
};

} // namespace zofra
