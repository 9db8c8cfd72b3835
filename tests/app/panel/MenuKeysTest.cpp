// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelMenuStyle.h"
#include "tests/app/panel/PanelWorld.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMenu>

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

class MenuKeysTest : public ::testing::Test {
public:
    ~MenuKeysTest() override { menu.setStyle(nullptr); }

protected:
    MenuKeysTest() {
        menu.setStyle(&style);
        for (const QString& text : {u"Bedroom"_qs, u"Bath & Bar"_qs, u"Dining Room"_qs, u"Dining Hall"_qs})
            menu.addAction(QString(text).replace(u"&"_qs, u"&&"_qs));
        menu.addSeparator();
        menu.addAction(u"\U0001F504 Search"_qs);
        menu.addAction(u"Nothing found"_qs)->setEnabled(false);
        menu.popup(QPoint(0, 0));
    }

    void press(int key, const QString& text, quint64 afterMilliseconds = 100) {
        m_now += afterMilliseconds;
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
        event.setTimestamp(m_now);
        QApplication::sendEvent(&menu, &event);
    }
    void type(const QString& text, quint64 afterMilliseconds = 5000) {
        for (const QChar letter : text) {
            press(letter.toUpper().unicode(), QString(letter), afterMilliseconds);
            afterMilliseconds = 100;
        }
    }
    quint64 now() const { return m_now; }
    QString current() { return menu.activeAction() ? menu.activeAction()->text() : QString(); }

    PanelWorld world;
    PanelLook look{PanelTheme::make({}, QApplication::palette()),
                   PanelMetrics(QApplication::font(), 96, 800)};
    PanelMenuStyle style{look};
    QMenu menu;

private:
    quint64 m_now = 1000;
};

TEST_F(MenuKeysTest, LettersGoToTheLineThatBeginsWithThem) {
    type(u"din"_qs);
    EXPECT_EQ(current(), u"Dining Room"_qs);
    type(u"dining h"_qs);
    EXPECT_EQ(current(), u"Dining Hall"_qs);
    type(u"BA"_qs);
    EXPECT_EQ(current(), u"Bath && Bar"_qs);
    type(u"x"_qs);
    EXPECT_EQ(current(), u"Bath && Bar"_qs);
}

TEST_F(MenuKeysTest, TheSameLetterGoesOnToTheNextLine) {
    type(u"b"_qs);
    EXPECT_EQ(current(), u"Bedroom"_qs);
    type(u"b"_qs, 100);
    EXPECT_EQ(current(), u"Bath && Bar"_qs);
    type(u"b"_qs, 100);
    EXPECT_EQ(current(), u"Bedroom"_qs);
    type(u"b"_qs);
    EXPECT_EQ(current(), u"Bath && Bar"_qs);
}

TEST_F(MenuKeysTest, EachMenuBeginsAnew) {
    QMenu submenu;
    submenu.setStyle(&style);
    submenu.addAction(u"Below"_qs);
    submenu.addAction(u"Nothing"_qs);
    submenu.popup(QPoint(0, 0));
    type(u"d"_qs);
    QKeyEvent event(QEvent::KeyPress, Qt::Key_N, Qt::NoModifier, u"n"_qs);
    event.setTimestamp(now() + 100);
    QApplication::sendEvent(&submenu, &event);
    EXPECT_EQ(submenu.activeAction(), submenu.actions().at(1));
    submenu.setStyle(nullptr);
}

TEST_F(MenuKeysTest, SignsBeforeATextAreNotTyped) {
    type(u"s"_qs);
    EXPECT_EQ(menu.actions().indexOf(menu.activeAction()), 5);
}

TEST_F(MenuKeysTest, LinesThatAreOnlySaidCanBeReachedAndNotChosen) {
    int chosen = 0;
    QObject::connect(&menu, &QMenu::triggered, &menu, [&chosen] { ++chosen; });
    press(Qt::Key_Up, {});
    EXPECT_EQ(current(), u"Nothing found"_qs);
    press(Qt::Key_Return, u"\r"_qs);
    EXPECT_EQ(chosen, 0);
    EXPECT_TRUE(menu.isVisible());
    press(Qt::Key_Up, {});
    press(Qt::Key_Up, {});
    EXPECT_EQ(current(), u"Dining Hall"_qs);
    press(Qt::Key_Return, u"\r"_qs);
    EXPECT_EQ(chosen, 1);
}

TEST_F(MenuKeysTest, ABlankChoosesUnlessItStandsWithinAName) {
    int chosen = 0;
    QObject::connect(&menu, &QMenu::triggered, &menu, [&chosen] { ++chosen; });
    type(u"dining "_qs);
    EXPECT_EQ(chosen, 0);
    press(Qt::Key_Space, u" "_qs, 5000);
    EXPECT_EQ(chosen, 1);
    EXPECT_FALSE(menu.isVisible());
}

} // namespace
} // namespace zofra::test
