// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/SpeakerFindings.h"

#include <QJsonArray>

#include <algorithm>
#include <system_error>

namespace zofra::doctor {

namespace {

QString errorText(int error) {
    return QString::fromStdString(std::generic_category().message(error));
}

bool isMulticast(const InterfaceSearch::Send& send) {
    return send.address == u"239.255.255.250";
}

QJsonObject details(const InterfaceSearch& search) {
    QJsonArray sends;
    for (const auto& send : search.sends)
        sends.append(QJsonObject{{u"to"_qs, send.address}, {u"errno"_qs, send.error}});
    return {{u"interface"_qs, search.interface.name},
            {u"address"_qs, search.interface.ip},
            {u"sends"_qs, sends},
            {u"answers"_qs, search.answers.size()}};
}

/// Players that are there but did not answer the search of this interface.
bool hasScanned(const SpeakerFacts& facts, const InterfaceInfo& interface) {
    const QString network = interface.ip.section(u'.', 0, 2) + u'.';
    return std::ranges::any_of(facts.scanned,
                               [&network](const QUrl& url) { return url.host().startsWith(network); });
}

Finding judgeInterface(const SpeakerFacts& facts, const InterfaceSearch& search, AppLanguage language) {
    const QString area = u"network"_qs;
    const QString name = search.interface.name + u' ' + search.interface.ip;
    const auto failed = [](const InterfaceSearch::Send& send) { return send.error != 0; };
    const bool nothingSent = !search.sends.empty() && std::ranges::all_of(search.sends, failed);
    if (nothingSent)
        return problem(area, text::searchRefused.in(language, name, errorText(search.sends.back().error)),
                       text::openFirewall.in(language), details(search));
    const auto blocked = std::ranges::find_if(
        search.sends, [&](const auto& send) { return isMulticast(send) && failed(send); });
    if (blocked != search.sends.end())
        return problem(area, text::multicastRefused.in(language, name, errorText(blocked->error)),
                       text::allowMulticast.in(language), details(search));
    if (search.answers.isEmpty() && hasScanned(facts, search.interface))
        return problem(area, text::multicastLost.in(language, name), text::passMulticast.in(language),
                       details(search));
    return fine(area,
                search.answers.size() == 1
                    ? text::searchedOne.in(language, name)
                    : text::searched.in(language, name, QString::number(search.answers.size())),
                details(search));
}

QString wayOf(const SpeakerFacts& facts, const SonosSpeaker& speaker) {
    const QUrl url = speaker.deviceDescriptionURL();
    const bool answered = std::ranges::any_of(
        facts.searches, [&url](const InterfaceSearch& search) { return search.answers.contains(url); });
    if (answered)
        return u"search"_qs;
    return facts.scanned.contains(url) ? u"scan"_qs : u"topology"_qs;
}

QJsonObject details(const SpeakerFacts& facts) {
    QJsonArray rooms;
    for (const auto& room : facts.rooms) {
        QJsonArray players;
        for (const auto& speaker : room.speakers)
            players.append(QJsonObject{{u"address"_qs, speaker.ip}, {u"way"_qs, wayOf(facts, speaker)}});
        rooms.append(QJsonObject{{u"id"_qs, room.id()}, {u"name"_qs, room.name}, {u"players"_qs, players}});
    }
    return {{u"rooms"_qs, rooms}};
}

QString ways(const SpeakerFacts& facts, AppLanguage language) {
    QMap<QString, int> counts;
    for (const auto& room : facts.rooms) {
        for (const auto& speaker : room.speakers)
            ++counts[wayOf(facts, speaker)];
    }
    QStringList parts;
    const auto add = [&](const char* way, const Text& text) {
        if (const int count = counts.value(QString::fromLatin1(way)))
            parts.append(text.in(language, count));
    };
    add("search", text::bySearch);
    add("scan", text::byScan);
    add("topology", text::byTopology);
    return parts.join(u", "_qs);
}

QString roomNames(const QList<SonosRoom>& rooms, AppLanguage language) {
    constexpr qsizetype named = 6;
    QStringList names;
    for (const auto& room : rooms.first(std::min(rooms.size(), named)))
        names.append(room.name);
    if (rooms.size() > named)
        names.append(text::andMore.in(language, rooms.size() - named));
    return names.join(u", "_qs);
}

QString roomList(const SpeakerFacts& facts, AppLanguage language) {
    const auto names = roomNames(facts.rooms, language);
    const auto found = ways(facts, language);
    return facts.rooms.size() == 1
               ? text::oneRoom.in(language, names, found)
               : text::rooms.in(language, names, found, QString::number(facts.rooms.size()));
}

QString foundSoFar(const SpeakerFacts& facts, AppLanguage language) {
    const auto count = facts.scanned.size();
    if (count == 0)
        return text::noneSoFar.in(language);
    return count == 1 ? text::onePlayerSoFar.in(language) : text::playersSoFar.in(language, count);
}

Finding judgePlayers(const SpeakerFacts& facts, AppLanguage language) {
    const QString area = u"players"_qs;
    if (!facts.rooms.isEmpty())
        return fine(area, roomList(facts, language), details(facts));
    if (facts.refusedRequests > 0)
        return problem(area, text::playersRefused.in(language, errorText(facts.lastRefusal)),
                       text::openFirewall.in(language), details(facts));
    const bool isUnfinished = facts.state == SpeakerFacts::State::searching;
    return fine(area, isUnfinished ? foundSoFar(facts, language) : text::noPlayers.in(language),
                details(facts));
}

} // namespace

Findings judgeSpeakers(const SpeakerFacts& facts, AppLanguage language) {
    const QString network = u"network"_qs;
    if (facts.state == SpeakerFacts::State::notWanted)
        return {skipped(network, text::notSearched.in(language))};
    Findings findings;
    for (const auto& search : facts.searches)
        findings.push_back(judgeInterface(facts, search, language));
    if (findings.empty() && facts.state == SpeakerFacts::State::done)
        findings.push_back(problem(network, text::noInterface.in(language), text::joinNetwork.in(language)));
    findings.push_back(judgePlayers(facts, language));
    return findings;
}

} // namespace zofra::doctor
