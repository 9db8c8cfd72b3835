// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/PlayerTopologyMember.h"
#include "speakers/SonosSpeaker.h"
#include "speakers/SpeakerBackground.h"
#include "speakers/TextFetcher.h"

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

private:
    void fetchDescriptions(const QList<QUrl>& addresses);
    [[nodiscard]] QList<PlayerTopologyMember> askForTopology() const;
    void fetchUnknownMembers(const QList<PlayerTopologyMember>& members);

    std::shared_ptr<SpeakerBackground> m_background;
    TextFetcher m_fetcher;
    /// Every address asked for its description in this run: none is asked twice.
    QSet<QUrl> m_asked;
    /// By id.
    QMap<QString, SonosSpeaker> m_speakers;
};

/// Changes a speaker as the household's topology has it.
void applyTopology(SonosSpeaker& speaker, const PlayerTopologyMember& member);

} // namespace zofra
