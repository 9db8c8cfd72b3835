// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/SpeakerCheck.h"

#include "speakers/NetworkPlayerProtocol.h"

#include <algorithm>
#include <utility>

namespace zofra::doctor {

using namespace std::chrono_literals;

using Facts = std::shared_ptr<PlayerLocked<SpeakerFacts>>;

namespace {

/// A player at home answers within a tenth of this; the program itself is more patient, but has the time.
constexpr auto probePatience = 900ms;
constexpr auto longestProbe = 1500ms;

InterfaceSearch* searchFrom(SpeakerFacts& facts, const QString& ip) {
    const auto found =
        std::ranges::find_if(facts.searches, [&ip](const auto& search) { return search.interface.ip == ip; });
    return found == facts.searches.end() ? nullptr : &*found;
}

bool isRefusal(const HttpResult& result) {
    return !result && result.error().code == HttpError::Code::notConnected;
}

} // namespace

class WatchedSocket final : public UdpSearchSocket {
public:
    WatchedSocket(std::unique_ptr<UdpSearchSocket> socket, QString ip, Facts facts)
        : m_socket(std::move(socket))
        , m_ip(std::move(ip))
        , m_facts(std::move(facts)) {}

    int send(const QString& address, std::uint16_t port, const QByteArray& datagram) override {
        const int error = m_socket->send(address, port, datagram);
        m_facts->with([&](SpeakerFacts& facts) {
            if (auto* search = searchFrom(facts, m_ip))
                search->sends.push_back({address, error});
        });
        return error;
    }
    std::optional<QByteArray> receive(std::chrono::steady_clock::time_point deadline) override {
        auto datagram = m_socket->receive(deadline);
        const auto url =
            datagram ? NetworkPlayerProtocol::ssdpLocation(QString::fromUtf8(*datagram)) : std::nullopt;
        if (url) {
            m_facts->with([&](SpeakerFacts& facts) {
                auto* search = searchFrom(facts, m_ip);
                if (search && search->answers.size() < SpeakerBackground::maxAddresses)
                    search->answers.insert(*url);
            });
        }
        return datagram;
    }
    [[nodiscard]] std::chrono::steady_clock::time_point now() const override { return m_socket->now(); }

private:
    std::unique_ptr<UdpSearchSocket> m_socket;
    const QString m_ip;
    const Facts m_facts;
};

class WatchedNetwork final : public LocalNetwork {
public:
    WatchedNetwork(LocalNetwork& network, Facts facts)
        : m_network(network)
        , m_facts(std::move(facts)) {}

    [[nodiscard]] std::vector<InterfaceAddress> interfaceAddresses() const override {
        auto addresses = m_network.interfaceAddresses();
        const auto active = activeIPv4Interfaces(addresses);
        m_facts->with([&active](SpeakerFacts& facts) {
            for (const auto& interface : active)
                facts.searches.push_back({interface, {}, {}});
        });
        return addresses;
    }
    [[nodiscard]] std::unique_ptr<UdpSearchSocket> openSearchSocket(const QString& ip) override {
        auto socket = m_network.openSearchSocket(ip);
        return socket ? std::make_unique<WatchedSocket>(std::move(socket), ip, m_facts) : nullptr;
    }

private:
    LocalNetwork& m_network;
    const Facts m_facts;
};

class WatchedSession final : public HttpSession {
public:
    WatchedSession(HttpSession& session, Facts facts)
        : m_session(session)
        , m_facts(std::move(facts)) {}

    void start(HttpRequest request, Completion completion) override {
        const QUrl url = request.url;
        const bool isProbe = request.timeout == longestProbe;
        request.timeout = isProbe ? std::chrono::milliseconds(probePatience) : request.timeout;
        m_session.start(std::move(request), [url, isProbe, facts = m_facts,
                                             completion = std::move(completion)](HttpResult result) {
            facts->with([&](SpeakerFacts& known) {
                if (isRefusal(result)) {
                    ++known.refusedRequests;
                    known.lastRefusal = result.error().systemErrno;
                } else if (isProbe && result && result->status == 200 &&
                           NetworkPlayerProtocol::speaker(QString::fromUtf8(result->body), url)) {
                    known.scanned.insert(url);
                }
            });
            completion(std::move(result));
        });
    }

private:
    HttpSession& m_session;
    const Facts m_facts;
};

/// What the search uses; it stays as long as the search does.
struct SpeakerCheck::Watch {
    explicit Watch(const SpeakerBackground::Outside& outside)
        : network(outside.network, facts)
        , session(outside.session, facts) {}

    Facts facts = std::make_shared<PlayerLocked<SpeakerFacts>>();
    WatchedNetwork network;
    WatchedSession session;
};

SpeakerCheck::SpeakerCheck(const SpeakerBackground::Outside& outside, AppLanguage language)
    : m_outside(outside)
    , m_language(language)
    , m_watch(std::make_shared<Watch>(outside)) {}

SpeakerCheck::~SpeakerCheck() {
    if (m_background)
        m_background->end();
}

void SpeakerCheck::start(Done done) {
    m_done = std::move(done);
    const auto setFacts = [facts = m_watch->facts](const auto& change) { facts->with(change); };
    SpeakerBackground::Reports reports;
    reports.localNetwork = [](bool) {};
    reports.rooms = [setFacts](const QList<SonosRoom>& rooms) {
        setFacts([&rooms](SpeakerFacts& facts) { facts.rooms = rooms; });
    };
    reports.runEnded = [this, setFacts] {
        setFacts([](SpeakerFacts& facts) { facts.state = SpeakerFacts::State::done; });
        m_done(soFar());
    };
    m_background = std::make_shared<SpeakerBackground>(
        SpeakerBackground::Outside{m_watch->session, m_outside.mainQueue, m_outside.tasks, m_watch->network,
                                   m_outside.systemLog},
        std::move(reports));
    // The search keeps what it uses: it may outlast the patience of whoever asked.
    m_outside.tasks.async([watch = m_watch, background = m_background] {
        runDiscovery(background, false);
        background->noteRunEnded();
    });
}

Findings SpeakerCheck::soFar() const {
    return judgeSpeakers(m_watch->facts->value(), m_language);
}

} // namespace zofra::doctor
