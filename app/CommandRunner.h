// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Options.h"
#include "app/RadioControls.h"
#include "app/RadioStateSource.h"
#include "platform/MainQueue.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>

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
    explicit CommandRunner(const Environment& environment);

    /// For a second start: does everything now, or nothing and answers why not.
    [[nodiscard]] std::optional<QString> run(const Options& options);
    /// For the first start: a room that is not known yet may still be found for half a minute.
    void runAtStart(const Options& options, Report report);

private:
    void act(const Options& options, const std::optional<QString>& roomId);
    void chooseStation(const Options& options);
    /// The id of the room that `options` name by its id or title.
    [[nodiscard]] std::optional<QString> roomOf(const Options& options) const;

    Environment m_environment;
    Options m_waiting;
    Report m_report;
    ObservationToken m_waitingForChange;
    std::unique_ptr<Timer> m_giveUp;
};

} // namespace zofra
