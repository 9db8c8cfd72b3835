// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/Check.h"
#include "app/doctor/HostFindings.h"
#include "platform/RadioMetadataSocket.h"

#include <functional>
#include <memory>
#include <utility>

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
                    MakeWebSocket makeWebSocket, AppLanguage language)
        : m_tasks(tasks)
        , m_mainQueue(mainQueue)
        , m_target(std::move(target))
        , m_sendProbe(std::move(sendProbe))
        , m_makeWebSocket(std::move(makeWebSocket))
        , m_language(language) {}

    void start(Done done) override;
    [[nodiscard]] Findings soFar() const override;

private:
    void openSocket();
    void received(const Result<SocketMessage>& result);
    void finish(const LiveSocketOutcome& outcome);

    TaskPool& m_tasks;
    MainQueue& m_mainQueue;
    const HostTarget m_target;
    const SendProbe m_sendProbe;
    const MakeWebSocket m_makeWebSocket;
    const AppLanguage m_language;
    Done m_done;
    HostProbe m_probe;
    std::shared_ptr<RadioMetadataSocket> m_socket;
    std::unique_ptr<Timer> m_patience;
    Lifetime m_lifetime;
};

} // namespace zofra::doctor
