// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Observable.h"

#include <QString>
#include <QUrl>

#include <functional>
#include <memory>

namespace zofra {

/// What a stream player is doing.
enum class TimeControlStatus { paused, waitingToPlayAtSpecifiedRate, playing };

/// One stream to be played: its address, what it is called, and what can happen to it. Main thread only.
class StreamItem {
public:
    explicit StreamItem(QUrl address, QString name = {})
        : url(std::move(address))
        , title(std::move(name)) {}

    const QUrl url;
    /// As a volume mixer shows it.
    const QString title;
    /// The data ran dry while playing; told once per stall.
    ObserverList<> playbackStalled;
    /// The stream could not be opened, broke, or ended (a live stream that ends has failed).
    ObserverList<> failedToPlayToEndTime;
};

/// Plays one item on this computer. Main thread only, observers too. Destroying it silences it and them.
class StreamPlayer {
public:
    virtual ~StreamPlayer() = default;

    /// Asks for sound. After a lasting pause the live edge is played, not what was buffered.
    virtual void play() = 0;
    virtual void pause() = 0;
    /// Linear amplitude, 0 to 1.
    virtual void setVolume(float volume) = 0;
    /// Replaces the item; null leaves the player with nothing to play.
    virtual void replaceCurrentItem(std::shared_ptr<StreamItem> item) = 0;

    [[nodiscard]] virtual TimeControlStatus timeControlStatus() const = 0;
    /// Tells `handler` the status at once and at each change until the token ends.
    [[nodiscard]] virtual ObservationToken
    observeTimeControlStatus(std::function<void(TimeControlStatus)> handler) = 0;
};

/// Makes players. Main thread only.
class StreamPlayerFactory {
public:
    virtual ~StreamPlayerFactory() = default;
    /// A new player, paused, holding `item`. It opens nothing before `play`.
    [[nodiscard]] virtual std::unique_ptr<StreamPlayer> makePlayer(std::shared_ptr<StreamItem> item) = 0;
};

} // namespace zofra
