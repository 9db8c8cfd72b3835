// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/SearchProvider.h"

#include "tests/platform/desk/BusTest.h"

#include <QDBusArgument>

namespace zofra {
namespace {

using test::errorOf;

const auto path = QStringLiteral("/be/zofra/ZofraZofra/search");
const auto shell = QStringLiteral("org.gnome.Shell.SearchProvider2");
const auto runner = QStringLiteral("org.kde.krunner1");

class SearchProviderTest : public test::BusTest {
protected:
    void SetUp() override {
        BusTest::SetUp();
        if (!bus)
            return;
        provider.emplace(*bus,
                         std::vector<SearchProvider::Entry>{
                             {QStringLiteral("one"), QStringLiteral("Radio One"), QStringLiteral("Hits")},
                             {QStringLiteral("two"), QStringLiteral("Second Radio"), QStringLiteral("Pop")}});
        provider->onChosen = [this](const QString& id) { chosen << id; };
    }
    QDBusMessage ask(const QString& interface, const char* method, const QVariantList& arguments) {
        return call(bus->connection()->baseService(), path, interface, QString::fromLatin1(method),
                    arguments);
    }
    QStringList found(const QStringList& terms) {
        return ask(shell, "GetInitialResultSet", {terms}).arguments().value(0).toStringList();
    }

    std::optional<SearchProvider> provider;
    QStringList chosen;
};

TEST_F(SearchProviderTest, findsWhatHasAWordThatBeginsWithEachTerm) {
    EXPECT_EQ(found({QStringLiteral("rad")}), (QStringList{QStringLiteral("one"), QStringLiteral("two")}));
    EXPECT_EQ(found({QStringLiteral("RADIO"), QStringLiteral("s")}), QStringList{QStringLiteral("two")});
    EXPECT_EQ(found({QStringLiteral("adio")}), QStringList());
    EXPECT_EQ(found({}), QStringList());
    const auto fewer =
        ask(shell, "GetSubsearchResultSet",
            {QStringList{QStringLiteral("one"), QStringLiteral("two")}, QStringList{QStringLiteral("o")}});
    EXPECT_EQ(fewer.arguments().value(0).toStringList(), QStringList{QStringLiteral("one")});
}

TEST_F(SearchProviderTest, describesWhatItHasFound) {
    const auto reply =
        ask(shell, "GetResultMetas", {QStringList{QStringLiteral("two"), QStringLiteral("x")}});
    EXPECT_EQ(reply.signature(), QStringLiteral("aa{sv}"));
    const auto metas = qdbus_cast<QList<QVariantMap>>(reply.arguments().value(0));
    ASSERT_EQ(metas.size(), 1);
    EXPECT_EQ(metas.at(0).value(QStringLiteral("id")), QStringLiteral("two"));
    EXPECT_EQ(metas.at(0).value(QStringLiteral("name")), QStringLiteral("Second Radio"));
    EXPECT_EQ(metas.at(0).value(QStringLiteral("description")), QStringLiteral("Pop"));
}

TEST_F(SearchProviderTest, whatIsChosenIsPassedOnIfThereIsSuchAThing) {
    static_cast<void>(ask(shell, "ActivateResult", {QStringLiteral("two"), QStringList(), 0U}));
    static_cast<void>(ask(runner, "Run", {QStringLiteral("one"), QString()}));
    static_cast<void>(ask(runner, "Run", {QStringLiteral("three"), QString()}));
    EXPECT_EQ(chosen, (QStringList{QStringLiteral("two"), QStringLiteral("one")}));
}

TEST_F(SearchProviderTest, matchesAsTheRunnerWantsThem) {
    const auto reply = ask(runner, "Match", {QStringLiteral("second radio")});
    EXPECT_EQ(reply.signature(), QStringLiteral("a(sssida{sv})"));
    const auto list = qvariant_cast<QDBusArgument>(reply.arguments().value(0));
    list.beginArray();
    ASSERT_FALSE(list.atEnd());
    QString id;
    QString text;
    QString icon;
    int type = 0;
    double relevance = 0;
    QVariantMap more;
    list.beginStructure();
    list >> id >> text >> icon >> type >> relevance >> more;
    list.endStructure();
    EXPECT_TRUE(list.atEnd());
    list.endArray();
    EXPECT_EQ(id, QStringLiteral("two"));
    EXPECT_EQ(text, QStringLiteral("Second Radio"));
    EXPECT_EQ(type, 100) << "the whole name";
    EXPECT_EQ(relevance, 1.0);
    EXPECT_EQ(more.value(QStringLiteral("subtext")), QStringLiteral("Pop"));
    EXPECT_EQ(ask(runner, "Actions", {}).signature(), QStringLiteral("a(sss)"));
}

TEST_F(SearchProviderTest, refusesWhatNobodySearchesFor) {
    const auto limits = QStringLiteral("org.freedesktop.DBus.Error.LimitsExceeded");
    const QStringList many(65, QStringLiteral("radio"));
    EXPECT_EQ(errorOf(ask(shell, "GetInitialResultSet", {many})), limits);
    EXPECT_EQ(errorOf(ask(shell, "GetResultMetas", {many})), limits);
    EXPECT_EQ(errorOf(ask(runner, "Match", {QString(201, QLatin1Char('r'))})), limits);
}

} // namespace
} // namespace zofra
