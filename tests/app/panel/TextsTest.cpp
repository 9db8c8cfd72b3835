// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/DisplayText.h"
#include "app/panel/PanelTexts.h"
#include "tests/support/PrintQt.h"

#include <QTextDocument>

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

struct Row {
    const char* what;
    QString (*text)(AppLanguage);
    QString en, nl, fr, de;
};

class PanelTextTable : public ::testing::TestWithParam<Row> {};

TEST_P(PanelTextTable, IsSaidInFourLanguages) {
    const Row& row = GetParam();
    EXPECT_EQ(row.text(AppLanguage::en), row.en);
    EXPECT_EQ(row.text(AppLanguage::nl), row.nl);
    EXPECT_EQ(row.text(AppLanguage::fr), row.fr);
    EXPECT_EQ(row.text(AppLanguage::de), row.de);
}

INSTANTIATE_TEST_SUITE_P(
    All, PanelTextTable,
    ::testing::Values(
        Row{"Station", panelText::stationLabel, u"Station:"_qs, u"Zender:"_qs, u"Station :"_qs,
            u"Sender:"_qs},
        Row{"NowPlaying", panelText::nowPlaying, u"Now Playing"_qs, u"Nu bezig"_qs, u"En cours"_qs,
            u"Jetzt l\u00E4uft"_qs},
        Row{"UpNext", panelText::upNext, u"Up Next"_qs, u"Hierna"_qs, u"\u00C0 suivre"_qs,
            u"Als N\u00E4chstes"_qs},
        Row{"Output", panelText::outputLabel, u"Output:"_qs, u"Uitvoer:"_qs, u"Sortie :"_qs, u"Ausgabe:"_qs},
        Row{"ThisMac", panelText::thisMac, u"This Mac"_qs, u"Deze Mac"_qs, u"Ce Mac"_qs, u"Dieser Mac"_qs},
        Row{"Everywhere", panelText::everywhere, u"Everywhere (All Rooms)"_qs, u"Overal (Alle kamers)"_qs,
            u"Partout (Toutes les pi\u00E8ces)"_qs, u"\u00DCberall (Alle R\u00E4ume)"_qs},
        Row{"Search", panelText::search, u"Search for Sonos and Zofra devices..."_qs,
            u"Zoeken naar Sonos- en Zofra-apparaten..."_qs, u"Rechercher des appareils Sonos et Zofra..."_qs,
            u"Sonos- und Zofra-Ger\u00E4te suchen..."_qs},
        Row{"AllowLocalNetwork", panelText::allowLocalNetwork, u"Allow Local Network \u2026"_qs,
            u"Lokaal netwerk toestaan \u2026"_qs, u"Autoriser le r\u00E9seau local \u2026"_qs,
            u"Lokales Netzwerk erlauben \u2026"_qs},
        Row{"Note", panelText::synchronizationNote,
            u"Zofra plays independently; synchronization with Sonos is not guaranteed."_qs,
            u"Zofra speelt onafhankelijk; synchronisatie met Sonos is niet gegarandeerd."_qs,
            u"Zofra joue ind\u00E9pendamment ; la synchronisation avec Sonos n\u2019est pas garantie."_qs,
            u"Zofra spielt unabh\u00E4ngig; Synchronisation mit Sonos ist nicht garantiert."_qs},
        Row{"Play", panelText::play, u"Play"_qs, u"Muziek starten"_qs, u"Lancer la musique"_qs,
            u"Musik starten"_qs},
        Row{"Stop", panelText::stop, u"Stop"_qs, u"Muziek stoppen"_qs, u"Arr\u00EAter la musique"_qs,
            u"Musik stoppen"_qs},
        Row{"StartAutomatically", panelText::startAutomatically, u"Start automatically"_qs,
            u"Automatisch opstarten"_qs, u"Lancer au d\u00E9marrage"_qs, u"Automatisch starten"_qs},
        Row{"CloseWindow", panelText::closeWindow, u"Close Window"_qs, u"Venster sluiten"_qs,
            u"Fermer la fen\u00EAtre"_qs, u"Fenster schlie\u00DFen"_qs},
        Row{"WriteToUs", panelText::writeToUs, u"Write to us"_qs, u"Schrijf ons"_qs, u"\u00C9crivez-nous"_qs,
            u"Schreiben Sie uns"_qs}),
    [](const ::testing::TestParamInfo<Row>& tested) { return std::string(tested.param.what); });

TEST(PanelText, NamesLanguagesInTheirOwnTongue) {
    EXPECT_EQ(panelText::languageName(AppLanguage::en), u"English"_qs);
    EXPECT_EQ(panelText::languageName(AppLanguage::nl), u"Nederlands"_qs);
    EXPECT_EQ(panelText::languageName(AppLanguage::fr), u"Fran\u00E7ais"_qs);
    EXPECT_EQ(panelText::languageName(AppLanguage::de), u"Deutsch"_qs);
}

TEST(PanelText, ComposesVersionAndPercentage) {
    EXPECT_EQ(panelText::version(u"1.0 (Build 1)"_qs), u"Version 1.0 (Build 1)"_qs);
    EXPECT_EQ(panelText::volumePercent(0), u"0 %"_qs);
    EXPECT_EQ(panelText::volumePercent(100), u"100 %"_qs);
}

TEST(DisplayText, TakesLineBreaksAndControlsOut) {
    EXPECT_EQ(displayText(u"a\nb\tc\u0000d\u2028e\u0085f"_qs), u"a b c d e f"_qs);
}

TEST(DisplayText, DropsWhatTurnsTheDirection) {
    EXPECT_EQ(displayText(u"\u202Eevil\u202C \u2066x\u2069 \u200Fy\u061C"_qs), u"evil x y"_qs);
    // Text that runs from right to left by itself stays.
    EXPECT_EQ(displayText(u"\u05E9\u05DC\u05D5\u05DD"_qs), u"\u05E9\u05DC\u05D5\u05DD"_qs);
}

TEST(DisplayText, IsCutWhenItIsEndless) {
    const QString shown = displayText(QString(1024 * 1024, u'x'));
    EXPECT_EQ(shown.size(), 401);
    EXPECT_TRUE(shown.endsWith(QChar(0x2026)));
    // Not in the middle of a character outside of the first plane.
    const QString emoji = displayText(QString(399, u'x') + u"\U0001F3B5\U0001F3B5"_qs);
    EXPECT_EQ(emoji, QString(399, u'x') + QChar(0x2026));
}

TEST(DisplayText, KeepsAmpersandsInMenus) {
    EXPECT_EQ(menuText(u"Hits & Pop &&"_qs), u"Hits && Pop &&&&"_qs);
}

TEST(DisplayText, IsNeverMarkupInToolTips) {
    const QString text = u"<b>Tom</b> & <img src='file:///etc/passwd'>"_qs;
    QTextDocument document;
    document.setHtml(toolTipText(text));
    EXPECT_EQ(document.toPlainText(), text);
}

} // namespace
} // namespace zofra::test
