// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/Check.h"
#include "app/doctor/HostFindings.h"
#include "platform/RadioMetadataSocket.h"

#include <functional>
#include <memory>
#include <optional>

namespace zofra::doctor {

/// Sends one request and waits for it; callable from any thread.
using SendProbe = std::function<HostProbe(const HostProbe::Request&)>;

/// Asks one host for everything that the program wants from it, all at once.
[[nodiscard]] std::unique_ptr<Check> hostCheck(TaskPool& tasks, MainQueue& mainQueue,
                                               const HostTarget& target, const SendProbe& sendProbe,
                                               AppLanguage language);

/// Asks the live feed's host, then opens the socket the way the program does. Main thread only.
class LiveSocketCheck final : public Check {
public:
    LiveSocketCheck(TaskPool& tasks, MainQueue& mainQueue, HostTarget target, SendProbe sendProbe,
                    MakeWebSocket makeWebSocket, AppLanguage language);

    void start(Done done) override;
    [[nodiscard]] Findings soFar() const override;

private:
    /// Shared with what is under way; ends with the check.
    struct State;
    MainQueue& m_mainQueue;
    TaskPool& m_tasks;
    std::shared_ptr<State> m_state;
};

} // namespace zofra::doctor
