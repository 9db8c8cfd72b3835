// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/SearchProvider.h"

#include "platform/linux/DBusArguments.h"

#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace zofra {

/// (sssida{sv}): a match as KRunner takes it.
struct RunnerMatch {
    QString id;
    QString text;
    QString icon;
    int type = 0;
    double relevance = 0;
    QVariantMap properties;

    static constexpr std::tuple members{&RunnerMatch::id,        &RunnerMatch::text,
                                        &RunnerMatch::icon,      &RunnerMatch::type,
                                        &RunnerMatch::relevance, &RunnerMatch::properties};
};
/// (sss): something else to do with a match.
struct RunnerAction {
    QString id;
    QString text;
    QString icon;

    static constexpr std::tuple members{&RunnerAction::id, &RunnerAction::text, &RunnerAction::icon};
};

namespace {

using dbus::Answer;

const auto programIcon = u"be.zofra.ZofraZofra"_qs;
/// More words, and more results, than any search of stations has.
constexpr qsizetype mostTerms = 64;
constexpr qsizetype longestText = 200;

Answer moreThanASearch() {
    return dbus::refused("LimitsExceeded", u"No search has as much as that"_qs);
}

bool isTooMuch(const QStringList& terms) {
    return terms.size() > mostTerms ||
           std::ranges::any_of(terms, [](const QString& term) { return term.size() > longestText; });
}

QStringList wordsOf(const QString& text) {
    static const QRegularExpression between(u"\\s+"_qs);
    return text.split(between, Qt::SkipEmptyParts);
}

} // namespace

SearchProvider::SearchProvider(SessionBus& bus, std::vector<Entry> entries)
    : m_entries(std::move(entries))
    , m_object(u"/be/zofra/ZofraZofra/search"_qs, {shellInterface(), runnerInterface()}) {
    dbus::registerTypes<QList<QVariantMap>, RunnerMatch, QList<RunnerMatch>, RunnerAction,
                        QList<RunnerAction>>();
    m_connected =
        bus.observeConnected([this](const QDBusConnection& connection) { m_object.exportOn(connection); });
    m_disconnected = bus.observeDisconnected([this] { m_object.connectionLost(); });
}

dbus::Interface SearchProvider::shellInterface() {
    const auto search = [this](const QVariantList& arguments) {
        const auto terms = arguments.last().toStringList();
        return isTooMuch(terms) ? moreThanASearch() : Answer{{found(terms)}};
    };
    const auto metas = [this](const QVariantList& arguments) {
        return describe(arguments.at(0).toStringList());
    };
    const auto activate = [this](const QVariantList& arguments) {
        return choose(arguments.at(0).toString());
    };
    const auto launch = [this](const QVariantList&) { return Answer{.afterwards = onShow}; };
    return {"org.gnome.Shell.SearchProvider2",
            {{"GetInitialResultSet", "terms:as", "results:as", search},
             {"GetSubsearchResultSet", "previous_results:as terms:as", "results:as", search},
             {"GetResultMetas", "identifiers:as", "metas:aa{sv}", metas},
             {"ActivateResult", "identifier:s terms:as timestamp:u", "", activate},
             {"LaunchSearch", "terms:as timestamp:u", "", launch}}};
}

dbus::Interface SearchProvider::runnerInterface() {
    const auto matches = [this](const QVariantList& arguments) { return match(arguments.at(0).toString()); };
    const auto actions = [](const QVariantList&) {
        return Answer{{QVariant::fromValue(QList<RunnerAction>())}};
    };
    const auto run = [this](const QVariantList& arguments) { return choose(arguments.at(0).toString()); };
    return {"org.kde.krunner1",
            {{"Match", "query:s", "matches:a(sssida{sv})", matches},
             {"Actions", "", "actions:a(sss)", actions},
             {"Run", "matchId:s actionId:s", "", run}}};
}

QStringList SearchProvider::found(const QStringList& terms) const {
    QStringList ids;
    for (const Entry& entry : m_entries) {
        const QStringList words = wordsOf(entry.title);
        const auto isFound = [&words](const QString& term) {
            return std::ranges::any_of(
                words, [&term](const QString& word) { return word.startsWith(term, Qt::CaseInsensitive); });
        };
        if (!terms.isEmpty() && std::ranges::all_of(terms, isFound))
            ids.append(entry.id);
    }
    return ids;
}

Answer SearchProvider::describe(const QStringList& ids) const {
    if (isTooMuch(ids))
        return moreThanASearch();
    QList<QVariantMap> metas;
    for (const Entry& entry : m_entries) {
        if (ids.contains(entry.id))
            metas.append({{u"id"_qs, entry.id},
                          {u"name"_qs, entry.title},
                          {u"description"_qs, entry.description},
                          {u"gicon"_qs, programIcon}});
    }
    return {{QVariant::fromValue(metas)}};
}

Answer SearchProvider::match(const QString& text) const {
    if (text.size() > longestText)
        return moreThanASearch();
    const QStringList ids = found(wordsOf(text));
    QList<RunnerMatch> matches;
    for (const Entry& entry : m_entries) {
        constexpr int exactMatch = 100;
        constexpr int possibleMatch = 30;
        if (!ids.contains(entry.id))
            continue;
        const bool isExact = entry.title.compare(text.trimmed(), Qt::CaseInsensitive) == 0;
        matches.append({entry.id,
                        entry.title,
                        programIcon,
                        isExact ? exactMatch : possibleMatch,
                        isExact ? 1.0 : 0.7,
                        {{u"subtext"_qs, entry.description}}});
    }
    return {{QVariant::fromValue(matches)}};
}

Answer SearchProvider::choose(const QString& id) const {
    const bool isKnown = std::ranges::find(m_entries, id, &Entry::id) != m_entries.end();
    const auto chosen = onChosen;
    if (isKnown && chosen)
        chosen(id);
    return {};
}

} // namespace zofra
