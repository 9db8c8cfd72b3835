// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/InterfaceInfo.h"
#include "speakers/SpeakerBackground.h"

#include <QList>
#include <QSet>
#include <QUrl>

#include <memory>
#include <utility>

namespace zofra {

/// One search for players. It waits, so it belongs to a background thread; the end of the manager ends it.
class SpeakerDiscovery {
public:
    explicit SpeakerDiscovery(std::shared_ptr<SpeakerBackground> background)
        : m_background(std::move(background)) {}

    /// One complete run. What it finds goes to the manager's inner state.
    void runDiscovery(bool forceSubnetScan) const;

private:
    struct Search;

    [[nodiscard]] std::shared_ptr<Search> searchEverywhere(const QList<InterfaceInfo>& interfaces) const;
    [[nodiscard]] QList<QUrl> withKnownSpeakers(const QSet<QUrl>& found) const;

    std::shared_ptr<SpeakerBackground> m_background;
};

} // namespace zofra
