// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/HostChecks.h"

#include "metadata/LiveSocket.h"
#include "stations/texts/DoctorTexts.h"

#include <future>
#include <system_error>
#include <vector>

namespace zofra::doctor {

namespace {

namespace text = texts::doctor;

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
    return problem(areaOf(target.kind), target.host + u": "_qs + text::noAnswerInTime.in(language),
                   text::checkNameServer.in(language), {{u"host"_qs, target.host}});
}

} // namespace

std::unique_ptr<Check> hostCheck(TaskPool& tasks, MainQueue& mainQueue, const HostTarget& target,
                                 const SendProbe& sendProbe, AppLanguage language) {
    return std::make_unique<BackgroundCheck>(
        tasks, mainQueue, unanswered(target, language), [target, sendProbe, language] {
            return Findings{judgeHost(target, probeAll(target, sendProbe), language)};
        });
}

void LiveSocketCheck::start(Done done) {
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

void LiveSocketCheck::openSocket() {
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

void LiveSocketCheck::received(const Result<SocketMessage>& result) {
    if (!result) {
        finish({false, result.error()});
        return;
    }
    const auto* text = std::get_if<QString>(&*result);
    const bool isOpen = text && sockJSFrameKind(*text) == SockJSFrameKind::open;
    finish({isOpen, isOpen ? QString() : text::noOpenFrame.in(m_language)});
}

void LiveSocketCheck::finish(const LiveSocketOutcome& outcome) {
    m_patience.reset();
    m_socket.reset();
    if (const auto tell = std::exchange(m_done, nullptr))
        tell({judgeLiveSocket(m_target, m_probe, outcome, m_language)});
}

Findings LiveSocketCheck::soFar() const {
    return {unanswered(m_target, m_language)};
}

} // namespace zofra::doctor
