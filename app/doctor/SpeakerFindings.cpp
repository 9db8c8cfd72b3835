// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/SpeakerFindings.h"

#include <QJsonArray>

#include <algorithm>
#include <system_error>

namespace zofra::doctor {

namespace {

constexpr auto multicastAddress = QLatin1String("239.255.255.250");

QString firewallCure() {
    return QStringLiteral(
        "allow outgoing UDP to port 1900 and TCP to port 1400, and incoming UDP from the local "
        "network, in this computer's firewall.");
}

QString errorText(int error) {
    return QString::fromStdString(std::generic_category().message(error));
}

QString counted(qsizetype count, const QString& one, const QString& many) {
    return QString::number(count) + u' ' + (count == 1 ? one : many);
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

Finding judgeInterface(const SpeakerFacts& facts, const InterfaceSearch& search) {
    const QString area = QStringLiteral("network");
    const QString name = search.interface.name + u' ' + search.interface.ip;
    const auto failed = [](const InterfaceSearch::Send& send) { return send.error != 0; };
    const bool nothingSent =
        !search.sends.empty() && std::all_of(search.sends.begin(), search.sends.end(), failed);
    if (nothingSent)
        return problem(area,
                       name + QStringLiteral(": this computer refuses the search (") +
                           errorText(search.sends.back().error) + u')',
                       firewallCure(), details(search));
    const auto blocked = std::find_if(search.sends.begin(), search.sends.end(),
                                      [&](const auto& send) { return isMulticast(send) && failed(send); });
    if (blocked != search.sends.end())
        return problem(
            area,
            name + QStringLiteral(": multicast is blocked (") + errorText(blocked->error) +
                QStringLiteral("), broadcast is not"),
            QStringLiteral(
                "allow UDP to 239.255.255.250 port 1900 in the firewall, and give 224.0.0.0/4 a route."),
            details(search));
    if (search.answers.isEmpty() && hasScanned(facts, search.interface))
        return problem(
            area,
            name + QStringLiteral(": multicast is blocked: players are there but do not answer the search"),
            QStringLiteral("allow incoming UDP from the local network in this computer's firewall, and let "
                           "router and access "
                           "point pass multicast (IGMP snooping, client isolation)."),
            details(search));
    return fine(area,
                name + QStringLiteral(": searched, ") +
                    counted(search.answers.size(), QStringLiteral("answer"), QStringLiteral("answers")),
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

QString ways(const SpeakerFacts& facts) {
    QMap<QString, int> counts;
    for (const auto& room : facts.rooms) {
        for (const auto& speaker : room.speakers)
            ++counts[wayOf(facts, speaker)];
    }
    QStringList parts;
    const auto add = [&](const char* way, const QString& text) {
        if (const int count = counts.value(QString::fromLatin1(way)))
            parts.append(QString::number(count) + text);
    };
    add("search", QStringLiteral(" by the search"));
    add("scan", QStringLiteral(" by asking every address"));
    add("topology", QStringLiteral(" through other players"));
    return parts.join(QStringLiteral(", "));
}

QString roomNames(const QList<SonosRoom>& rooms) {
    constexpr qsizetype named = 6;
    QStringList names;
    for (const auto& room : rooms.first(std::min(rooms.size(), named)))
        names.append(room.name);
    if (rooms.size() > named)
        names.append(QStringLiteral("and %1 more").arg(rooms.size() - named));
    return names.join(QStringLiteral(", "));
}

Finding judgePlayers(const SpeakerFacts& facts) {
    const QString area = QStringLiteral("players");
    const bool isUnfinished = facts.state == SpeakerFacts::State::searching;
    if (!facts.rooms.isEmpty()) {
        return fine(area,
                    counted(facts.rooms.size(), QStringLiteral("room"), QStringLiteral("rooms")) +
                        QStringLiteral(": ") + roomNames(facts.rooms) + QStringLiteral(" (players: ") +
                        ways(facts) + u')',
                    details(facts));
    }
    if (facts.refusedRequests > 0)
        return problem(
            area,
            QStringLiteral("the local network is denied: this computer refuses to ask the players (") +
                errorText(facts.lastRefusal) + u')',
            firewallCure(), details(facts));
    if (isUnfinished)
        return facts.scanned.isEmpty()
                   ? fine(area,
                          QStringLiteral("none found so far; the network is larger than the time for it"),
                          details(facts))
                   : fine(area,
                          counted(facts.scanned.size(), QStringLiteral("player"), QStringLiteral("players")) +
                              QStringLiteral(" by asking every address; not all were asked in time"),
                          details(facts));
    return fine(area, QStringLiteral("none found, which is fine unless you have some"), details(facts));
}

} // namespace

Findings judgeSpeakers(const SpeakerFacts& facts) {
    if (facts.state == SpeakerFacts::State::notWanted)
        return {skipped(QStringLiteral("network"), QStringLiteral("not searched: --no-discovery"))};
    Findings findings;
    for (const auto& search : facts.searches)
        findings.push_back(judgeInterface(facts, search));
    if (findings.empty() && facts.state == SpeakerFacts::State::done)
        findings.push_back(
            problem(QStringLiteral("network"), QStringLiteral("no network interface is up"),
                    QStringLiteral("plug in the cable or join a Wi-Fi; players are looked for over IPv4.")));
    findings.push_back(judgePlayers(facts));
    return findings;
}

} // namespace zofra::doctor
