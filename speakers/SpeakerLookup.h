// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/NetworkPlayerProtocol.h"
#include "speakers/TextFetcher.h"

#include <QHash>
#include <QMap>
#include <QSet>

namespace zofra {

/// Bounds the processor time that one run spends on reading what players send. No host takes it from another:
/// each has an amount of its own, and short answers are read even when long ones have used up the whole.
class ReadBudget {
public:
    /// In characters. A household of 64 players sends a twelfth of the first for all of them together.
    static constexpr qsizetype perHost = 8'388'608;
    static constexpr qsizetype ofLongAnswers = 67'108'864;
    static constexpr qsizetype longAnswer = 65'536;

    /// Whether a text from `source` may be read; if so it is taken off.
    [[nodiscard]] bool take(const QUrl& source, const QString& text) {
        auto& ofHost = m_perHost[source.host()];
        const auto ofAll = text.size() > longAnswer ? text.size() : 0;
        if (ofHost + text.size() > perHost || m_ofAll + ofAll > ofLongAnswers)
            return false;
        ofHost += text.size();
        m_ofAll += ofAll;
        return true;
    }

private:
    QHash<QString, qsizetype> m_perHost;
    qsizetype m_ofAll = 0;
};

/// Turns description addresses into speakers: reads every description, asks every speaker for the household's
/// topology, and applies what they say. For background threads; one run each.
class SpeakerLookup {
public:
    explicit SpeakerLookup(const std::shared_ptr<SpeakerBackground>& background)
        : m_fetcher(background) {}

    /// The speakers at these addresses, and those that their topology knows of besides, in speaker order. A
    /// household that answers no topology still gives its speakers, as their descriptions have them.
    [[nodiscard]] QList<SonosSpeaker> discoverSpeakers(const QList<QUrl>& addresses);

    /// Size of all reports together, in characters with something on top for each member; what comes beyond
    /// is not kept. A hundred players that each report a hundred and fifty members stay far below it.
    static constexpr qsizetype maxReported = 8'388'608;
    /// One host's addresses looked at in one run: room for several players, not for a host that invents them.
    static constexpr qsizetype maxAddressesPerHost = 64;

private:
    void fetchDescriptions(const QList<QUrl>& addresses);
    [[nodiscard]] QList<PlayerTopologyMember> askForTopology();
    void fetchUnknownMembers(const QList<PlayerTopologyMember>& members);

    TextFetcher m_fetcher;
    /// Every address asked for its description in this run: none is asked twice.
    QSet<QUrl> m_asked;
    QHash<QString, qsizetype> m_askedOfHost;
    ReadBudget m_budget;
    /// By id.
    QMap<QString, SonosSpeaker> m_speakers;
};

} // namespace zofra
