// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/HttpSession.h"
#include "platform/LocalNetwork.h"
#include "platform/MainQueue.h"
#include "platform/SystemLog.h"
#include "platform/TaskPool.h"
#include "speakers/InterfaceInfo.h"
#include "speakers/NetworkPlayerProtocol.h"
#include "speakers/PlayerLocked.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <utility>

namespace zofra {

/// Whether a failed request says that the system refuses access to the local network.
[[nodiscard]] inline bool isLocalNetworkDenial(const std::optional<HttpError>& error) {
    return error && (error->code == HttpError::Code::notConnected ||
                     error->localizedDescription.contains(u"Local network prohibited"));
}

/// The manager's inner state: what its background work may touch. Callable from any thread. Background work
/// shares it; from the manager's end on nothing is logged, posted or sent any more, and every wait ends.
class SpeakerBackground : public std::enable_shared_from_this<SpeakerBackground> {
public:
    /// All of it outlives the background work.
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
    /// More description addresses than this are not looked at in one run. A house of the largest size has a
    /// tenth of it; whoever floods the network with invented addresses must not keep a run going for ever.
    static constexpr qsizetype maxAddresses = 1024;

    SpeakerBackground(const Outside& outside, Reports reports)
        : m_outside(outside)
        , m_reports(std::move(reports)) {}

    /// Main thread: the manager ends.
    void end() { m_end.request_stop(); }
    [[nodiscard]] bool ended() const { return m_end.stop_requested(); }
    /// Ends waits.
    [[nodiscard]] std::stop_token endToken() const { return m_end.get_token(); }
    [[nodiscard]] const Outside& outside() const { return m_outside; }

    /// Runs `work` on the main thread, unless the manager has ended by then.
    void post(std::function<void()> work) {
        if (ended())
            return;
        m_outside.mainQueue.async([weak = weak_from_this(), work = std::move(work)] {
            const auto self = weak.lock();
            if (self && !self->ended())
                work();
        });
    }
    /// Writes one line to the system's log.
    void log(const QString& message) {
        if (!ended())
            m_outside.systemLog.log(u"[Sonos] "_qs + message);
    }

    void noteLocalNetworkDenial() {
        post([this] { m_reports.localNetwork(true); });
    }
    /// Notes a denial when the system has refused a request to a network that is searched. There may be no
    /// way to an address elsewhere, one of IPv6 for instance, though all is well here.
    void noteIfDenied(const std::optional<HttpError>& error, const QUrl& target) {
        const auto isThere = [host = target.host()](const auto& interface) {
            return interface.reaches(host);
        };
        if (isLocalNetworkDenial(error) && std::ranges::any_of(searched.value(), isThere))
            noteLocalNetworkDenial();
    }
    void clearLocalNetworkDenial() {
        post([this] { m_reports.localNetwork(false); });
    }
    /// Takes over what a run found.
    void applySpeakers(const QList<SonosSpeaker>& speakers) {
        allSpeakers.set(speakers);
        post([this, rooms = NetworkPlayerProtocol::rooms(speakers)] { m_reports.rooms(rooms); });
    }
    void noteRunEnded() {
        post([this] { m_reports.runEnded(); });
    }

    /// The interfaces of the last run.
    PlayerLocked<QList<InterfaceInfo>> searched;
    /// Every speaker of the last successful run. Its lock does what a serial queue would.
    PlayerLocked<QList<SonosSpeaker>> allSpeakers;

private:
    const Outside m_outside;
    const Reports m_reports;
    std::stop_source m_end;
};

} // namespace zofra
