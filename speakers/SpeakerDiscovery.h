// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SpeakerBackground.h"

#include <QList>
#include <QSet>
#include <QString>
#include <QUrl>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace zofra {

/// One usable IPv4 interface.
struct InterfaceInfo {
    QString name;
    /// Dotted decimal.
    QString ip;
    /// Dotted decimal; absent when the interface cannot broadcast.
    std::optional<QString> broadcast;

    friend bool operator==(const InterfaceInfo&, const InterfaceInfo&) = default;
};

/// The interfaces among `addresses` that are up and running and neither loopback nor point-to-point, in their
/// order; one record per IPv4 address.
[[nodiscard]] QList<InterfaceInfo> activeIPv4Interfaces(const std::vector<InterfaceAddress>& addresses);

/// One search for players. It waits, so it belongs to a background thread, where it must be kept by
/// shared_ptr; the end of the manager ends it.
class SpeakerDiscovery : public std::enable_shared_from_this<SpeakerDiscovery> {
public:
    /// More description addresses than this are not looked at in one run. A house of the largest size has a
    /// tenth of it; whoever floods the network with invented addresses must not keep a run going for ever.
    static constexpr qsizetype maxAddresses = 1024;

    explicit SpeakerDiscovery(std::shared_ptr<SpeakerBackground> background)
        : m_background(std::move(background)) {}

    /// One complete run. What it finds goes to the manager's inner state.
    void runDiscovery(bool forceSubnetScan);

private:
    struct Search;

    void searchEverywhere(const QList<InterfaceInfo>& interfaces, const std::shared_ptr<Search>& search);
    [[nodiscard]] QSet<QUrl> searchViaSSDP(const InterfaceInfo& interface) const;
    [[nodiscard]] bool sendSearch(UdpSearchSocket& socket, const InterfaceInfo& interface) const;
    [[nodiscard]] QSet<QUrl> receiveAnswers(UdpSearchSocket& socket) const;
    [[nodiscard]] QSet<QUrl> probeSubnet(const QString& ip) const;
    void probe(const QUrl& url, const std::shared_ptr<PlayerLocked<QSet<QUrl>>>& found,
               const std::shared_ptr<DispatchGroup>& group) const;
    [[nodiscard]] QList<QUrl> withKnownSpeakers(const QSet<QUrl>& found) const;

    std::shared_ptr<SpeakerBackground> m_background;
};

} // namespace zofra
