// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/HttpSession.h"
#include "platform/LocalNetwork.h"
#include "platform/MainQueue.h"
#include "platform/SystemLog.h"
#include "platform/TaskPool.h"
#include "speakers/BackgroundWait.h"
#include "speakers/PlayerLocked.h"
#include "speakers/SonosRoom.h"
#include "speakers/SonosSpeaker.h"

#include <QList>
#include <QString>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace zofra {

/// The manager's inner state: what its background work may touch. Callable from any thread. Work holds it
/// weakly and takes hold of it for as long as it runs. From the manager's end on, everything here does
/// nothing, and the things outside are left alone, so that they need to outlive the manager only.
class SpeakerBackground : public std::enable_shared_from_this<SpeakerBackground> {
public:
    struct Outside {
        HttpSession& session;
        MainQueue& mainQueue;
        TaskPool& tasks;
        LocalNetwork& network;
        SystemLog& systemLog;
    };
    /// What the manager is told, on the main thread.
    struct Reports {
        /// Access to the local network is being refused, or is granted.
        std::function<void(bool denied)> localNetwork;
        /// The rooms that the speakers of a successful run make.
        std::function<void(const QList<SonosRoom>&)> rooms;
        std::function<void()> runEnded;
    };
    /// Requests in flight at most, probes and fetches alike.
    static constexpr std::ptrdiff_t maxRequestsInFlight = 32;

    SpeakerBackground(const Outside& outside, Reports reports);

    /// Main thread: the manager ends. Waits for nothing but calls to the outside that are just being made,
    /// all of which are brief.
    void end();
    [[nodiscard]] bool ended() const { return m_waitPoint->ended(); }

    /// Starts a request. From the end on the completion is let go uncalled.
    void start(HttpRequest request, HttpSession::Completion completion);
    /// Runs `work` on the main thread, unless the manager has ended by then.
    void post(std::function<void()> work);
    /// Runs `work` on a background thread. From the end on it is let go unrun.
    void async(std::function<void()> work);
    /// Writes one line to the system's log.
    void log(const QString& message);
    [[nodiscard]] std::vector<InterfaceAddress> interfaceAddresses();
    [[nodiscard]] std::unique_ptr<UdpSearchSocket> openSearchSocket(const QString& ip);

    void noteLocalNetworkDenial();
    void clearLocalNetworkDenial();
    /// Takes over what a run found.
    void applySpeakers(const QList<SonosSpeaker>& speakers);
    void noteRunEnded();

    [[nodiscard]] const std::shared_ptr<WaitPoint>& waitPoint() const { return m_waitPoint; }
    /// Bounds the probes of a subnet scan.
    [[nodiscard]] const std::shared_ptr<CountingSemaphore>& probeLimit() const { return m_probeLimit; }

    /// Every speaker of the last successful run. Its lock does what a serial queue would.
    PlayerLocked<QList<SonosSpeaker>> allSpeakers;

private:
    template<typename Use>
    void use(Use use);

    Outside m_outside;
    Reports m_reports;
    std::shared_ptr<WaitPoint> m_waitPoint = std::make_shared<WaitPoint>();
    std::shared_ptr<CountingSemaphore> m_probeLimit =
        std::make_shared<CountingSemaphore>(m_waitPoint, maxRequestsInFlight);
    /// Calls to the outside under way; guarded by the wait point.
    int m_uses = 0;
};

/// Whether a failed request says that the system refuses access to the local network.
[[nodiscard]] bool isLocalNetworkDenial(const std::optional<HttpError>& error);

} // namespace zofra
