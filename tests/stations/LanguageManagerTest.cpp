// SPDX-License-Identifier: GPL-3.0-or-later
#include "stations/LanguageManager.h"

#include "tests/support/FakeDefaultsStore.h"
#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra {
namespace {

const auto key = QStringLiteral("app_language");

AppLanguage languageAtStart(const std::optional<QString>& stored, const QStringList& preferred) {
    test::FakeDefaultsStore defaults;
    if (stored)
        defaults.values[key] = *stored;
    const LanguageManager manager(defaults, preferred);
    EXPECT_TRUE(defaults.writes.empty()) << "the choice at start is not written";
    return manager.currentLanguage();
}

class LanguageManagerTest : public testing::Test {
protected:
    test::FakeDefaultsStore defaults;
    LanguageManager manager{defaults, {}};
};

TEST_F(LanguageManagerTest, keepsItsKey) {
    EXPECT_EQ(manager.defaultsKey, key);
}

TEST_F(LanguageManagerTest, startsInTheStoredLanguage) {
    for (const auto language : allAppLanguages)
        EXPECT_EQ(languageAtStart(rawValue(language), {QStringLiteral("es")}), language);
    EXPECT_EQ(languageAtStart(QStringLiteral("fr"), {QStringLiteral("nl-BE")}), AppLanguage::fr);
}

TEST_F(LanguageManagerTest, ignoresAStoredTextThatIsNoLanguage) {
    for (const auto* stored : {u"es", u"FR", u"Fr", u"", u"french"}) {
        EXPECT_EQ(languageAtStart(QStringView(stored).toString(), {QStringLiteral("nl-BE")}),
                  AppLanguage::nl);
        EXPECT_EQ(languageAtStart(QStringView(stored).toString(), {}), AppLanguage::en);
    }
}

TEST_F(LanguageManagerTest, fallsBackToTheFirstPreferredLanguageByTwoLetters) {
    const std::vector<std::pair<QString, AppLanguage>> expected{
        {QStringLiteral("nl-BE"), AppLanguage::nl},       {QStringLiteral("de_CH"), AppLanguage::de},
        {QStringLiteral("fr-CA"), AppLanguage::fr},       {QStringLiteral("en-US"), AppLanguage::en},
        {QStringLiteral("FR_be"), AppLanguage::fr},       {QStringLiteral("De"), AppLanguage::de},
        {QStringLiteral("nl_BE.UTF-8"), AppLanguage::nl}, {QStringLiteral("es-ES"), AppLanguage::en},
        {QStringLiteral("d"), AppLanguage::en},           {QString(), AppLanguage::en},
    };
    for (const auto& [preferred, language] : expected)
        EXPECT_EQ(languageAtStart(std::nullopt, {preferred}), language) << preferred.toStdString();
}

TEST_F(LanguageManagerTest, looksAtTheFirstPreferredLanguageOnly) {
    EXPECT_EQ(languageAtStart(std::nullopt, {QStringLiteral("es"), QStringLiteral("nl")}), AppLanguage::en);
    EXPECT_EQ(languageAtStart(std::nullopt, {QStringLiteral("de"), QStringLiteral("nl")}), AppLanguage::de);
}

TEST_F(LanguageManagerTest, speaksFrenchToACanadian) {
    const LanguageManager french(defaults, {QStringLiteral("fr-CA")});
    EXPECT_EQ(french.tooltipStatus(false), QStringLiteral("Status: En pause"));
}

TEST_F(LanguageManagerTest, storesThenTellsWhenAssigned) {
    std::vector<QString> order;
    const auto token = manager.observe([&] {
        order.push_back(QStringLiteral("announced while ") + rawValue(manager.currentLanguage()));
        EXPECT_TRUE(defaults.writes.empty());
    });
    manager.onLanguageChanged = [&] {
        order.push_back(QStringLiteral("told ") + rawValue(manager.currentLanguage()));
        EXPECT_EQ(defaults.string(key), QStringLiteral("de")) << "stored before it is told";
    };
    manager.setCurrentLanguage(AppLanguage::de);
    EXPECT_EQ(order, (std::vector<QString>{QStringLiteral("announced while en"), QStringLiteral("told de")}));
}

TEST_F(LanguageManagerTest, storesAndTellsAnAssignmentOfTheCurrentLanguageToo) {
    int told = 0;
    manager.onLanguageChanged = [&] { ++told; };
    manager.setCurrentLanguage(AppLanguage::en);
    EXPECT_EQ(told, 1);
    EXPECT_EQ(defaults.writes, std::vector<QString>{key});
    EXPECT_EQ(defaults.string(key), QStringLiteral("en"));
}

TEST_F(LanguageManagerTest, choosingTheCurrentLanguageDoesNothing) {
    int told = 0;
    const auto token = manager.observe([&] { ++told; });
    manager.onLanguageChanged = [&] { ++told; };
    manager.setLanguage(AppLanguage::en);
    EXPECT_EQ(told, 0);
    EXPECT_TRUE(defaults.writes.empty());

    manager.setLanguage(AppLanguage::fr);
    EXPECT_EQ(told, 2);
    EXPECT_EQ(defaults.string(key), QStringLiteral("fr"));
    EXPECT_EQ(manager.currentLanguage(), AppLanguage::fr);
}

TEST_F(LanguageManagerTest, worksWithoutACallback) {
    manager.setLanguage(AppLanguage::nl);
    EXPECT_EQ(defaults.string(key), QStringLiteral("nl"));
}

struct Texts {
    AppLanguage language;
    const char* stationMenu;
    const char* nowPlaying;
    const char* upNext;
    const char* output;
    const char* volume;
    const char* tooltipStation;
    const char* tooltipOutput;
    const char* playing;
    const char* paused;
};

class LanguageTextsTest : public testing::TestWithParam<Texts> {};

TEST_P(LanguageTextsTest, areTheOnesOfTheirLanguage) {
    test::FakeDefaultsStore defaults;
    defaults.values[key] = rawValue(GetParam().language);
    const LanguageManager manager(defaults, {});
    const auto expected = [](const char* text) { return QString::fromUtf8(text); };
    EXPECT_EQ(manager.stationMenuTitle(QStringLiteral("JOE")), expected(GetParam().stationMenu));
    EXPECT_EQ(manager.nowPlayingHeader(QStringLiteral("A")), expected(GetParam().nowPlaying));
    EXPECT_EQ(manager.upNextHeader(QStringLiteral("B")), expected(GetParam().upNext));
    EXPECT_EQ(manager.outputMenuTitle(QStringLiteral("Bad")), expected(GetParam().output));
    EXPECT_EQ(manager.volumeMenuTitle(62), expected(GetParam().volume));
    EXPECT_EQ(manager.tooltipStation(QStringLiteral("JOE"), QStringLiteral("Pop")),
              expected(GetParam().tooltipStation));
    EXPECT_EQ(manager.tooltipOutput(QStringLiteral("Bad")), expected(GetParam().tooltipOutput));
    EXPECT_EQ(manager.tooltipStatus(true), expected(GetParam().playing));
    EXPECT_EQ(manager.tooltipStatus(false), expected(GetParam().paused));
}

INSTANTIATE_TEST_SUITE_P(
    Each, LanguageTextsTest,
    testing::Values(Texts{AppLanguage::en, "Station (JOE)", "Now Playing: A", "Up Next: B",
                          "Audio Output (Bad)", "Volume (62 %)", "Station: JOE (Pop)", "Output: Bad",
                          "Status: Playing", "Status: Paused"},
                    Texts{AppLanguage::nl, "Zender (JOE)", "Nu bezig: A", "Hierna: B", "Audio-uitvoer (Bad)",
                          "Volume (62 %)", "Zender: JOE (Pop)", "Uitvoer: Bad", "Status: Afspelen",
                          "Status: Gepauzeerd"},
                    Texts{AppLanguage::fr, "Station (JOE)", "En cours : A", "À suivre : B",
                          "Sortie audio (Bad)", "Volume (62 %)", "Station : JOE (Pop)", "Sortie : Bad",
                          "Status: Lecture en cours", "Status: En pause"},
                    Texts{AppLanguage::de, "Sender (JOE)", "Aktuell: A", "Als Nächstes: B",
                          "Audio-Ausgabe (Bad)", "Lautstärke (62 %)", "Sender: JOE (Pop)", "Ausgabe: Bad",
                          "Status: Wiedergabe läuft", "Status: Pausiert"}),
    [](const auto& parameter) { return rawValue(parameter.param.language).toStdString(); });

TEST_F(LanguageManagerTest, writesVolumesPlainly) {
    EXPECT_EQ(manager.volumeMenuTitle(0), QStringLiteral("Volume (0 %)"));
    EXPECT_EQ(manager.volumeMenuTitle(100), QStringLiteral("Volume (100 %)"));
    EXPECT_EQ(manager.volumeMenuTitle(-5), QStringLiteral("Volume (-5 %)"));
    EXPECT_EQ(manager.volumeMenuTitle(1234567), QStringLiteral("Volume (1234567 %)"));
}

TEST_F(LanguageManagerTest, joinsWhateverItIsGiven) {
    EXPECT_EQ(manager.nowPlayingHeader(QString()), QStringLiteral("Now Playing: "));
    EXPECT_EQ(manager.upNextHeader(QString()), QStringLiteral("Up Next: "));
    EXPECT_EQ(manager.tooltipStation(QString(), QString()), QStringLiteral("Station:  ()"));
    EXPECT_EQ(manager.stationMenuTitle(QString()), QStringLiteral("Station ()"));
    EXPECT_EQ(manager.nowPlayingHeader(QStringLiteral("%1 & <b>%2")),
              QStringLiteral("Now Playing: %1 & <b>%2"));
    EXPECT_EQ(manager.tooltipStation(QStringLiteral("%2"), QStringLiteral("%1")),
              QStringLiteral("Station: %2 (%1)"));
}

} // namespace
} // namespace zofra
