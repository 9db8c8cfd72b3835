// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/PlayerTopologyMember.h"
#include "speakers/ReadBudget.h"
#include "speakers/SonosSpeaker.h"
#include "speakers/SpeakerBackground.h"
#include "speakers/TextFetcher.h"

#include <QHash>
#include <QList>
#include <QMap>
#include <QSet>
#include <QString>
#include <QUrl>

#include <memory>

namespace zofra {

/// Turns description addresses into speakers: reads every description, asks every speaker for the household's
/// topology, and applies what they say. For background threads; one run each.
class SpeakerLookup {
public:
    explicit SpeakerLookup(std::shared_ptr<SpeakerBackground> background);

    /// The speakers at these addresses, and those that their topology knows of besides, in speaker order. A
    /// household that answers no topology still gives its speakers, as their descriptions have them.
    [[nodiscard]] QList<SonosSpeaker> discoverSpeakers(const QList<QUrl>& addresses);

    /// Size of all reports together, in characters with something on top for each member; what comes beyond
    /// is not kept. A hundred players that each report a hundred and fifty members stay far below it.
    static constexpr qsizetype maxReported = 8'388'608;
    /// One host's addresses looked at in one run. Several players may share a host; a host that invents
    /// players must not keep a run going.
    static constexpr qsizetype maxAddressesPerHost = 64;

private:
    void fetchDescriptions(const QList<QUrl>& addresses);
    [[nodiscard]] QList<PlayerTopologyMember> askForTopology();
    void fetchUnknownMembers(const QList<PlayerTopologyMember>& members);

    std::shared_ptr<SpeakerBackground> m_background;
    TextFetcher m_fetcher;
    /// Every address asked for its description in this run: none is asked twice.
    QSet<QUrl> m_asked;
    QHash<QString, qsizetype> m_askedOfHost;
    ReadBudget m_budget;
    /// By id.
    QMap<QString, SonosSpeaker> m_speakers;
};

} // namespace zofra
