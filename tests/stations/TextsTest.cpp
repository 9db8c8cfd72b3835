// SPDX-License-Identifier: GPL-3.0-or-later
#include "stations/texts/InterfaceTexts.h"
#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

struct Row {
    const char* what;
    Text text;
    QString en, nl, fr, de;
};

class TextTableTest : public ::testing::TestWithParam<Row> {};

TEST_P(TextTableTest, IsSaidInFourLanguages) {
    const Row& row = GetParam();
    EXPECT_EQ(row.text.in(AppLanguage::en), row.en);
    EXPECT_EQ(row.text.in(AppLanguage::nl), row.nl);
    EXPECT_EQ(row.text.in(AppLanguage::fr), row.fr);
    EXPECT_EQ(row.text.in(AppLanguage::de), row.de);
}

INSTANTIATE_TEST_SUITE_P(
    All, TextTableTest,
    ::testing::Values(
        Row{"Station", texts::stationLabel, u"Station:"_qs, u"Zender:"_qs, u"Station :"_qs, u"Sender:"_qs},
        Row{"NowPlaying", texts::nowPlaying, u"Now Playing"_qs, u"Nu bezig"_qs, u"En cours"_qs,
            u"Jetzt l\u00E4uft"_qs},
        Row{"UpNext", texts::upNext, u"Up Next"_qs, u"Hierna"_qs, u"\u00C0 suivre"_qs,
            u"Als N\u00E4chstes"_qs},
        Row{"Output", texts::outputLabel, u"Output:"_qs, u"Uitvoer:"_qs, u"Sortie :"_qs, u"Ausgabe:"_qs},
        Row{"ThisMac", texts::thisMac, u"This Mac"_qs, u"Deze Mac"_qs, u"Ce Mac"_qs, u"Dieser Mac"_qs},
        Row{"Everywhere", texts::everywhere, u"Everywhere (All Rooms)"_qs, u"Overal (Alle kamers)"_qs,
            u"Partout (Toutes les pi\u00E8ces)"_qs, u"\u00DCberall (Alle R\u00E4ume)"_qs},
        Row{"Search", texts::searchEntry, u"Search for Sonos and Zofra devices..."_qs,
            u"Zoeken naar Sonos- en Zofra-apparaten..."_qs, u"Rechercher des appareils Sonos et Zofra..."_qs,
            u"Sonos- und Zofra-Ger\u00E4te suchen..."_qs},
        Row{"AllowLocalNetwork", texts::allowLocalNetwork, u"Allow Local Network \u2026"_qs,
            u"Lokaal netwerk toestaan \u2026"_qs, u"Autoriser le r\u00E9seau local \u2026"_qs,
            u"Lokales Netzwerk erlauben \u2026"_qs},
        Row{"Note", texts::synchronizationNote,
            u"Zofra plays independently; synchronization with Sonos is not guaranteed."_qs,
            u"Zofra speelt onafhankelijk; synchronisatie met Sonos is niet gegarandeerd."_qs,
            u"Zofra joue ind\u00E9pendamment ; la synchronisation avec Sonos n\u2019est pas garantie."_qs,
            u"Zofra spielt unabh\u00E4ngig; Synchronisation mit Sonos ist nicht garantiert."_qs},
        Row{"Play", texts::playMusic, u"Play"_qs, u"Muziek starten"_qs, u"Lancer la musique"_qs,
            u"Musik starten"_qs},
        Row{"Stop", texts::stopMusic, u"Stop"_qs, u"Muziek stoppen"_qs, u"Arr\u00EAter la musique"_qs,
            u"Musik stoppen"_qs},
        Row{"StartAutomatically", texts::startAutomatically, u"Start automatically"_qs,
            u"Automatisch opstarten"_qs, u"Lancer au d\u00E9marrage"_qs, u"Automatisch starten"_qs},
        Row{"CloseWindow", texts::closeWindow, u"Close Window"_qs, u"Venster sluiten"_qs,
            u"Fermer la fen\u00EAtre"_qs, u"Fenster schlie\u00DFen"_qs},
        Row{"Loading", texts::loading, u"Loading..."_qs, u"Laden..."_qs, u"Chargement..."_qs,
            u"L\u00E4dt..."_qs},
        Row{"WriteToUs", texts::writeToUs, u"Write to us"_qs, u"Schrijf ons"_qs, u"\u00C9crivez-nous"_qs,
            u"Schreiben Sie uns"_qs}),
    [](const ::testing::TestParamInfo<Row>& tested) { return std::string(tested.param.what); });

TEST(TextTest, NamesLanguagesInTheirOwnTongue) {
    EXPECT_EQ(texts::languageName.in(AppLanguage::en), u"English"_qs);
    EXPECT_EQ(texts::languageName.in(AppLanguage::nl), u"Nederlands"_qs);
    EXPECT_EQ(texts::languageName.in(AppLanguage::fr), u"Fran\u00E7ais"_qs);
    EXPECT_EQ(texts::languageName.in(AppLanguage::de), u"Deutsch"_qs);
}

TEST(TextTest, ComposesVersionAndPercentage) {
    EXPECT_EQ(texts::version.in(AppLanguage::fr, u"1.0 (Build 1)"_qs), u"Version 1.0 (Build 1)"_qs);
    EXPECT_EQ(texts::volumePercent.in(AppLanguage::de, 0), u"0 %"_qs);
    EXPECT_EQ(texts::volumePercent.in(AppLanguage::de, 100), u"100 %"_qs);
}

TEST(TextTest, TakesAValueAsItIs) {
    EXPECT_EQ(texts::nowPlayingLine.in(AppLanguage::en, u"100 %1 %2"_qs), u"Now Playing: 100 %1 %2"_qs);
    EXPECT_EQ(texts::tooltipStation.in(AppLanguage::nl, u"%2 %1"_qs, u"%L1"_qs), u"Zender: %2 %1 (%L1)"_qs);
}

} // namespace
} // namespace zofra::test
