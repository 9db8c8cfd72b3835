// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/HostChecks.h"

#include "metadata/LiveSocket.h"
#include "stations/texts/DoctorTexts.h"

#include <future>
#include <system_error>
#include <utility>
#include <vector>

namespace zofra::doctor {

namespace {

constexpr auto socketPatience = std::chrono::milliseconds(5000);
constexpr std::size_t maxBody = 1'048'576;

HostProbe::Request requestFor(const HostTarget& target, const QUrl& url) {
    HostProbe::Request request;
    request.url = url;
    // Of a stream its first byte says enough, of a text the whole.
    if (target.kind != HostTarget::Kind::stream)
        request.enoughBodyBytes = maxBody;
    if (target.kind == HostTarget::Kind::onAir || target.kind == HostTarget::Kind::scraper)
        request.userAgent = "Mozilla/5.0";
    return request;
}

std::vector<HostProbe> probeAll(const HostTarget& target, const SendProbe& sendProbe) {
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

Finding unanswered(const HostTarget& target, AppLanguage language) {
    return problem(areaOf(target.kind),
                   target.host + QStringLiteral(": ") + texts::doctor::noAnswerInTime.in(language),
                   texts::doctor::checkNameServer.in(language), {{QStringLiteral("host"), target.host}});
}

} // namespace

std::unique_ptr<Check> hostCheck(TaskPool& tasks, MainQueue& mainQueue, const HostTarget& target,
                                 const SendProbe& sendProbe, AppLanguage language) {
    return std::make_unique<BackgroundCheck>(
        tasks, mainQueue, unanswered(target, language), [target, sendProbe, language] {
            return Findings{judgeHost(target, probeAll(target, sendProbe), language)};
        });
}

struct LiveSocketCheck::State : std::enable_shared_from_this<LiveSocketCheck::State> {
    MainQueue& mainQueue;
    HostTarget target;
    SendProbe sendProbe;
    MakeWebSocket makeWebSocket;
    AppLanguage language;
    Done done;
    HostProbe probe;
    std::shared_ptr<RadioMetadataSocket> socket;
    std::unique_ptr<Timer> patience;

    State(MainQueue& queue, HostTarget wanted, SendProbe send, MakeWebSocket make, AppLanguage tongue)
        : mainQueue(queue)
        , target(std::move(wanted))
        , sendProbe(std::move(send))
        , makeWebSocket(std::move(make))
        , language(tongue) {}

    void finish(const LiveSocketOutcome& outcome) {
        patience.reset();
        socket.reset();
        if (const auto tell = std::exchange(done, nullptr))
            tell({judgeLiveSocket(target, probe, outcome, language)});
    }

    void openSocket() {
        const auto url = liveSocketUrl(target.host);
        if (probe.failedAt != HostProbe::Step::done || !url) {
            finish({});
            return;
        }
        socket = makeWebSocket(*url);
        patience = mainQueue.startTimer(socketPatience, MainQueue::Repeat::once, [this] { finish({}); });
        socket->receive([&queue = mainQueue, weak = weak_from_this()](const auto& result) {
            queue.async([weak, result] {
                if (const auto state = weak.lock())
                    state->received(result);
            });
        });
        socket->resume();
    }

    void received(const Result<SocketMessage>& result) {
        if (!result) {
            finish({false, result.error()});
            return;
        }
        const auto* text = std::get_if<QString>(&*result);
        const bool isOpen = text && sockJSFrameKind(*text) == SockJSFrameKind::open;
        finish({isOpen, isOpen ? QString() : texts::doctor::noOpenFrame.in(language)});
    }
};

LiveSocketCheck::LiveSocketCheck(TaskPool& tasks, MainQueue& mainQueue, HostTarget target,
                                 SendProbe sendProbe, MakeWebSocket makeWebSocket, AppLanguage language)
    : m_mainQueue(mainQueue)
    , m_tasks(tasks)
    , m_state(std::make_shared<State>(mainQueue, std::move(target), std::move(sendProbe),
                                      std::move(makeWebSocket), language)) {}

void LiveSocketCheck::start(Done done) {
    m_state->done = std::move(done);
    m_tasks.async([&queue = m_mainQueue, target = m_state->target, send = m_state->sendProbe,
                   weak = std::weak_ptr(m_state)] {
        const auto probe =
            target.urls.isEmpty() ? HostProbe() : send(requestFor(target, target.urls.first()));
        queue.async([weak, probe] {
            if (const auto state = weak.lock()) {
                state->probe = probe;
                state->openSocket();
            }
        });
    });
}

Findings LiveSocketCheck::soFar() const {
    return {unanswered(m_state->target, m_state->language)};
}

} // namespace zofra::doctor
