// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/SpeakerFindings.h"

#include "stations/texts/DoctorTexts.h"

#include <QJsonArray>

#include <algorithm>
#include <system_error>

namespace zofra::doctor {

namespace {

constexpr auto multicastAddress = QLatin1String("239.255.255.250");

QString errorText(int error) {
    return QString::fromStdString(std::generic_category().message(error));
}

bool isMulticast(const InterfaceSearch::Send& send) {
    return send.address == multicastAddress;
}

QJsonObject details(const InterfaceSearch& search) {
    QJsonArray sends;
    for (const auto& send : search.sends)
        sends.append(
            QJsonObject{{QStringLiteral("to"), send.address}, {QStringLiteral("errno"), send.error}});
    return {{QStringLiteral("interface"), search.interface.name},
            {QStringLiteral("address"), search.interface.ip},
            {QStringLiteral("sends"), sends},
            {QStringLiteral("answers"), search.answers.size()}};
}

/// Players that are there but did not answer the search of this interface.
bool hasScanned(const SpeakerFacts& facts, const InterfaceInfo& interface) {
    const QString network = interface.ip.section(u'.', 0, 2) + u'.';
    return std::any_of(facts.scanned.begin(), facts.scanned.end(),
                       [&network](const QUrl& url) { return url.host().startsWith(network); });
}

Finding judgeInterface(const SpeakerFacts& facts, const InterfaceSearch& search, AppLanguage language) {
    const QString area = QStringLiteral("network");
    const QString name = search.interface.name + u' ' + search.interface.ip;
    const auto failed = [](const InterfaceSearch::Send& send) { return send.error != 0; };
    const bool nothingSent =
        !search.sends.empty() && std::all_of(search.sends.begin(), search.sends.end(), failed);
    if (nothingSent)
        return problem(area,
                       texts::doctor::searchRefused.in(language, name, errorText(search.sends.back().error)),
                       texts::doctor::openFirewall.in(language), details(search));
    const auto blocked = std::find_if(search.sends.begin(), search.sends.end(),
                                      [&](const auto& send) { return isMulticast(send) && failed(send); });
    if (blocked != search.sends.end())
        return problem(area, texts::doctor::multicastRefused.in(language, name, errorText(blocked->error)),
                       texts::doctor::allowMulticast.in(language), details(search));
    if (search.answers.isEmpty() && hasScanned(facts, search.interface))
        return problem(area, texts::doctor::multicastLost.in(language, name),
                       texts::doctor::passMulticast.in(language), details(search));
    return fine(area,
                search.answers.size() == 1
                    ? texts::doctor::searchedOne.in(language, name)
                    : texts::doctor::searched.in(language, name, QString::number(search.answers.size())),
                details(search));
}

QString wayOf(const SpeakerFacts& facts, const SonosSpeaker& speaker) {
    const QUrl url = speaker.deviceDescriptionURL();
    const bool answered =
        std::any_of(facts.searches.begin(), facts.searches.end(),
                    [&url](const InterfaceSearch& search) { return search.answers.contains(url); });
    if (answered)
        return QStringLiteral("search");
    return facts.scanned.contains(url) ? QStringLiteral("scan") : QStringLiteral("topology");
}

QJsonObject details(const SpeakerFacts& facts) {
    QJsonArray rooms;
    for (const auto& room : facts.rooms) {
        QJsonArray players;
        for (const auto& speaker : room.speakers)
            players.append(QJsonObject{{QStringLiteral("address"), speaker.ip},
                                       {QStringLiteral("way"), wayOf(facts, speaker)}});
        rooms.append(QJsonObject{{QStringLiteral("id"), room.id()},
                                 {QStringLiteral("name"), room.name},
                                 {QStringLiteral("players"), players}});
    }
    return {{QStringLiteral("rooms"), rooms}};
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
    add("search", texts::doctor::bySearch);
    add("scan", texts::doctor::byScan);
    add("topology", texts::doctor::byTopology);
    return parts.join(QStringLiteral(", "));
}

QString roomNames(const QList<SonosRoom>& rooms, AppLanguage language) {
    constexpr qsizetype named = 6;
    QStringList names;
    for (const auto& room : rooms.first(std::min(rooms.size(), named)))
        names.append(room.name);
    if (rooms.size() > named)
        names.append(texts::doctor::andMore.in(language, rooms.size() - named));
    return names.join(QStringLiteral(", "));
}

QString roomList(const SpeakerFacts& facts, AppLanguage language) {
    const auto names = roomNames(facts.rooms, language);
    const auto found = ways(facts, language);
    return facts.rooms.size() == 1
               ? texts::doctor::oneRoom.in(language, names, found)
               : texts::doctor::rooms.in(language, names, found, QString::number(facts.rooms.size()));
}

QString foundSoFar(const SpeakerFacts& facts, AppLanguage language) {
    const auto count = facts.scanned.size();
    if (count == 0)
        return texts::doctor::noneSoFar.in(language);
    return count == 1 ? texts::doctor::onePlayerSoFar.in(language)
                      : texts::doctor::playersSoFar.in(language, count);
}

Finding judgePlayers(const SpeakerFacts& facts, AppLanguage language) {
    const QString area = QStringLiteral("players");
    if (!facts.rooms.isEmpty())
        return fine(area, roomList(facts, language), details(facts));
    if (facts.refusedRequests > 0)
        return problem(area, texts::doctor::playersRefused.in(language, errorText(facts.lastRefusal)),
                       texts::doctor::openFirewall.in(language), details(facts));
    const bool isUnfinished = facts.state == SpeakerFacts::State::searching;
    return fine(area, isUnfinished ? foundSoFar(facts, language) : texts::doctor::noPlayers.in(language),
                details(facts));
}

} // namespace

Findings judgeSpeakers(const SpeakerFacts& facts, AppLanguage language) {
    const QString network = QStringLiteral("network");
    if (facts.state == SpeakerFacts::State::notWanted)
        return {skipped(network, texts::doctor::notSearched.in(language))};
    Findings findings;
    for (const auto& search : facts.searches)
        findings.push_back(judgeInterface(facts, search, language));
    if (findings.empty() && facts.state == SpeakerFacts::State::done)
        findings.push_back(problem(network, texts::doctor::noInterface.in(language),
                                   texts::doctor::joinNetwork.in(language)));
    findings.push_back(judgePlayers(facts, language));
    return findings;
}

} // namespace zofra::doctor
