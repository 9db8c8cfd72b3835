// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/Check.h"
#include "app/doctor/HostFindings.h"
#include "platform/RadioMetadataSocket.h"

#include <functional>
#include <future>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

namespace zofra::doctor {

/// Sends one request and waits for it; callable from any thread.
using SendProbe = std::function<HostProbe(const HostProbe::Request&)>;

/// What a host is asked for at one of its addresses.
[[nodiscard]] inline HostProbe::Request requestFor(const HostTarget& target, const QUrl& url) {
    HostProbe::Request request;
    request.url = url;
    // Of a stream its first byte says enough, of a text the whole.
    if (target.kind != HostTarget::Kind::stream)
        request.enoughBodyBytes = 1'048'576;
    if (target.kind == HostTarget::Kind::onAir || target.kind == HostTarget::Kind::scraper)
        request.userAgent = "Mozilla/5.0";
    return request;
}

/// What there is to say of a host while nothing is known.
[[nodiscard]] inline Finding unanswered(const HostTarget& target, AppLanguage language) {
    return problem(target.area(), target.host + u": "_qs + text::noAnswerInTime.in(language),
                   text::checkNameServer.in(language), {{u"host"_qs, target.host}});
}

/// Asks one host for everything that the program wants from it, all at once.
[[nodiscard]] inline std::vector<HostProbe> probeAll(const HostTarget& target, const SendProbe& sendProbe) {
    std::vector<std::future<HostProbe>> running;
    std::vector<HostProbe> probes;
    for (const auto& url : target.urls) {
        const auto request = requestFor(target, url);
        try {
            running.push_back(std::async(std::launch::async, sendProbe, request));
        } catch (const std::system_error&) {
            probes.push_back(sendProbe(request)); // No thread to be had.
        }
    }
    for (auto& one : running)
        probes.push_back(one.get());
    return probes;
}

/// The same as a check.
[[nodiscard]] inline std::unique_ptr<Check> hostCheck(TaskPool& tasks, MainQueue& mainQueue,
                                                      const HostTarget& target, const SendProbe& sendProbe,
                                                      AppLanguage language) {
    return std::make_unique<BackgroundCheck>(
        tasks, mainQueue, unanswered(target, language), [target, sendProbe, language] {
            return Findings{judgeHost(target, probeAll(target, sendProbe), language)};
        });
}

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

    void start(Done done) override {
        m_done = std::move(done);
        auto probed = m_lifetime.guard([this](const HostProbe& probe) {
            m_probe = probe;
            openSocket();
        });
        m_tasks.async([&queue = m_mainQueue, target = m_target, send = m_sendProbe, probed] {
            const auto probe =
                target.urls.isEmpty() ? HostProbe() : send(requestFor(target, target.urls.first()));
            queue.async([probed, probe]() mutable { probed(probe); });
        });
    }
    [[nodiscard]] Findings soFar() const override { return {unanswered(m_target, m_language)}; }

private:
    static constexpr auto socketPatience = std::chrono::milliseconds(5000);

    void openSocket() {
        const auto url = liveSocketUrl(m_target.host);
        if (m_probe.failedAt != HostProbe::Step::done || !url) {
            finish({});
            return;
        }
        m_socket = m_makeWebSocket(*url);
        m_patience = m_mainQueue.startTimer(socketPatience, MainQueue::Repeat::once, [this] { finish({}); });
        auto take = m_lifetime.guard([this](const Result<SocketMessage>& result) { received(result); });
        m_socket->receive([&queue = m_mainQueue, take](const Result<SocketMessage>& result) {
            queue.async([take, result]() mutable { take(result); });
        });
        m_socket->resume();
    }
    void received(const Result<SocketMessage>& result) {
        if (!result) {
            finish({false, result.error()});
            return;
        }
        const auto* text = std::get_if<QString>(&*result);
        const bool isOpen = text && sockJSFrameKind(*text) == SockJSFrameKind::open;
        finish({isOpen, isOpen ? QString() : text::noOpenFrame.in(m_language)});
    }
    void finish(const LiveSocketOutcome& outcome) {
        m_patience.reset();
        m_socket.reset();
        if (const auto tell = std::exchange(m_done, nullptr))
            tell({judgeLiveSocket(m_target, m_probe, outcome, m_language)});
    }

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
