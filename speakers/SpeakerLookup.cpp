// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SpeakerLookup.h"

#include "speakers/NetworkPlayerProtocol.h"
#include "speakers/SoapRequest.h"

#include <algorithm>
#include <chrono>

namespace zofra {

namespace {

constexpr std::chrono::seconds descriptionTimeout{3};
constexpr std::size_t maxTopologyBytes = 1'048'576;

HttpRequest topologyRequest(const SonosSpeaker& speaker) {
    const auto endpoint = speaker.endpoint(speaker.topologyPath, QString::fromLatin1(ControlPath::topology));
    auto request = soapRequest(endpoint, u"ZoneGroupTopology:1"_qs, u"GetZoneGroupState"_qs, QString());
    request.purpose = HttpRequest::Purpose::question;
    request.maxBodyBytes = maxTopologyBytes;
    return request;
}

/// What keeping a report costs, in characters.
qsizetype sizeOf(const QList<PlayerTopologyMember>& members) {
    constexpr qsizetype record = 64;
    qsizetype size = 0;
    for (const auto& member : members) {
        const auto address = member.descriptionURL ? member.descriptionURL->toEncoded().size() : 0;
        size += record + member.uuid.size() + member.zoneName.size() + member.coordinator.size() + address;
    }
    return size;
}

} // namespace

QList<SonosSpeaker> SpeakerLookup::discoverSpeakers(const QList<QUrl>& addresses) {
    fetchDescriptions(addresses);
    const auto members = askForTopology();
    fetchUnknownMembers(members);
    for (const auto& member : members) {
        const auto speaker = m_speakers.find(member.uuid);
        if (speaker != m_speakers.end())
            applyTopology(*speaker, member);
    }
    auto speakers = m_speakers.values();
    std::ranges::stable_sort(speakers, comesBefore);
    return speakers;
}

void SpeakerLookup::fetchDescriptions(const QList<QUrl>& addresses) {
    QList<QUrl> toAsk;
    for (const auto& address : addresses) {
        if (m_asked.size() >= SpeakerBackground::maxAddresses || m_asked.contains(address) ||
            m_askedOfHost.value(address.host()) >= maxAddressesPerHost)
            continue;
        m_asked.insert(address);
        ++m_askedOfHost[address.host()];
        toAsk.append(address);
    }
    // In this order, so that of two addresses of one player the same one is kept on each run.
    std::sort(toAsk.begin(), toAsk.end());
    std::vector<HttpRequest> requests;
    for (const auto& address : std::as_const(toAsk))
        requests.push_back(descriptionRequest(address, descriptionTimeout));
    std::vector<std::optional<SonosSpeaker>> found(requests.size());
    m_fetcher.fetchTexts(requests, TextFetcher::Denial::noted, [&](std::size_t index, const QString& text) {
        const auto& address = toAsk[static_cast<qsizetype>(index)];
        if (m_budget.take(address, text))
            found[index] = NetworkPlayerProtocol::speaker(text, address);
    });
    for (const auto& speaker : found) {
        if (speaker && !m_speakers.contains(speaker->id))
            m_speakers.insert(speaker->id, *speaker);
    }
}

QList<PlayerTopologyMember> SpeakerLookup::askForTopology() {
    std::vector<HttpRequest> requests;
    for (const auto& speaker : m_speakers)
        requests.push_back(topologyRequest(speaker));
    // By speaker, not by arrival: which answer counts as the later one is the same on each run.
    QList<QList<PlayerTopologyMember>> answers(m_speakers.size());
    qsizetype kept = 0;
    m_fetcher.fetchTexts(requests, TextFetcher::Denial::noted, [&](std::size_t index, const QString& text) {
        if (!m_budget.take(requests[index].url, text))
            return;
        auto members = NetworkPlayerProtocol::topology(text);
        const auto size = sizeOf(members);
        if (kept + size > maxReported)
            return;
        kept += size;
        answers[static_cast<qsizetype>(index)] = std::move(members);
    });
    return NetworkPlayerProtocol::merge(answers);
}

void SpeakerLookup::fetchUnknownMembers(const QList<PlayerTopologyMember>& members) {
    QList<QUrl> addresses;
    for (const auto& member : members) {
        if (member.descriptionURL && !m_speakers.contains(member.uuid))
            addresses.append(*member.descriptionURL);
    }
    fetchDescriptions(addresses);
}

} // namespace zofra
