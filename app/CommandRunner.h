// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Options.h"
#include "app/RadioControls.h"
#include "app/RadioStateSource.h"
#include "app/VolumePercent.h"
#include "platform/MainQueue.h"
#include "stations/texts/CommandTexts.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace zofra {

/// Does what a command line asks of the running program. Main thread only.
class CommandRunner {
public:
    /// Receives one line about what could not be done.
    using Report = std::function<void(const QString& line)>;

    struct Environment {
        RadioControls& controls;
        RadioStateSource& state;
        MainQueue& mainQueue;
    };
    explicit CommandRunner(const Environment& environment)
        : m_environment(environment) {}

    /// For a second start: does everything now, or nothing and answers why not.
    [[nodiscard]] std::optional<QString> run(const Options& options) {
        const auto firstStartOnly = options.firstStartOnly();
        if (!firstStartOnly.isEmpty())
            return texts::command::firstStartOnly.in(options.language, firstStartOnly.join(u", "_qs));
        const auto room = roomOf(options);
        if (!room && namesRoom(options))
            return unknownRoom(options);
        if (!options.acts())
            m_environment.controls.showPanel();
        else
            act(options, room);
        return std::nullopt;
    }
    /// For the first start: a room that is not known yet may still be found for half a minute.
    void runAtStart(const Options& options, Report report) {
        const auto room = roomOf(options);
        if (room || !namesRoom(options)) {
            act(options, room);
            return;
        }
        // Without discovery no room will ever come by itself.
        if (options.noDiscovery) {
            report(unknownRoom(options));
            return;
        }
        m_waiting = options;
        m_report = std::move(report);
        const auto stopWaiting = [this] {
            m_giveUp.reset();
            // The token may be the one whose handler is running; it holds nothing of what is used below.
            m_waitingForChange.reset();
        };
        m_waitingForChange = m_environment.state.observe([this, stopWaiting](const RadioState&) {
            const auto found = roomOf(m_waiting);
            if (!found)
                return;
            const Options waiting = m_waiting;
            stopWaiting();
            act(waiting, found);
        });
        m_giveUp =
            m_environment.mainQueue.startTimer(roomPatience, MainQueue::Repeat::once, [this, stopWaiting] {
                const auto tell = m_report;
                const QString line = unknownRoom(m_waiting);
                stopWaiting();
                tell(line);
            });
    }

private:
    static constexpr auto roomPatience = std::chrono::seconds(30);

    static bool isHere(const Options& options) { return options.output == u"here"; }
    static bool isEverywhere(const Options& options) { return options.output == u"everywhere"; }
    static bool namesRoom(const Options& options) {
        return options.output && !isHere(options) && !isEverywhere(options);
    }
    static QString unknownRoom(const Options& options) {
        return texts::command::noSuchRoom.in(options.language, options.output.value_or(QString()));
    }

    void act(const Options& options, const std::optional<QString>& roomId) {
        RadioControls& controls = m_environment.controls;
        chooseStation(options);
        if (roomId)
            controls.chooseRoom(*roomId);
        else if (isEverywhere(options))
            controls.chooseEverywhere();
        else if (isHere(options))
            controls.chooseThisComputer();
        if (options.volume && options.volume->kind == Options::Volume::Kind::change)
            controls.changeVolume(options.volume->percent);
        else if (options.volume)
            controls.setVolume(volumeOfPercent(options.volume->percent));
        // Choosing a room or every room has begun to play there; choosing this computer has not.
        const bool isStarted = roomId || isEverywhere(options);
        if (options.playback == Options::Playback::stop)
            controls.stop();
        else if (options.playback == Options::Playback::play && !isStarted)
            controls.play();
        else if (options.playback == Options::Playback::toggle && !isStarted)
            controls.toggle();
        if (options.stopIn)
            controls.stopIn(*options.stopIn);
        if (options.notify)
            controls.announceSongs(*options.notify);
    }
    void chooseStation(const Options& options) {
        RadioControls& controls = m_environment.controls;
        if (options.station && options.playback == Options::Playback::play)
            controls.chooseStationToHear(*options.station);
        else if (options.station)
            controls.chooseStation(*options.station);
        if (options.stationStep != Options::StationStep::none)
            controls.chooseNeighbour(options.stationStep == Options::StationStep::next ? 1 : -1);
    }
    /// The id of the room that `options` name by its id or title.
    [[nodiscard]] std::optional<QString> roomOf(const Options& options) const {
        if (!namesRoom(options))
            return std::nullopt;
        const QString& text = *options.output;
        const RadioState state = m_environment.state.now();
        for (const auto& [room, title] : state.rooms) {
            if (room.id() == text)
                return text;
        }
        for (const auto sensitivity : {Qt::CaseSensitive, Qt::CaseInsensitive}) {
            for (const auto& [room, title] : state.rooms) {
                if (title.compare(text, sensitivity) == 0)
                    return room.id();
            }
        }
        return std::nullopt;
    }

    Environment m_environment;
    Options m_waiting;
    Report m_report;
    ObservationToken m_waitingForChange;
    std::unique_ptr<Timer> m_giveUp;
};

} // namespace zofra
