// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/CheckBox.h"
#include "app/panel/ElidedLabel.h"
#include "app/panel/PanelParts.h"
#include "tests/app/panel/PanelViewTest.h"

#include <QHelpEvent>
#include <QLayout>
#include <QScreen>
#include <QTextDocument>
#include <QToolTip>

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

class PanelLongTextTest : public PanelViewTest {};

TEST_F(PanelLongTextTest, LongAndHostileSongsAreCutAndReadWhole) {
    const QString song = u"<b>Tom & Jerry</b> \u202E"_qs + QString(200, u'x');
    world.viewModel.currentSong = song;
    showPanel();
    const int width = view->width();
    for (const ElidedLabel* label : partsOf<ElidedLabel>(*view)) {
        if (!label->content().startsWith(u"<b>"_qs))
            continue;
        EXPECT_TRUE(label->isElided());
        EXPECT_EQ(label->accessibleName(), u"<b>Tom & Jerry</b> "_qs + QString(200, u'x'));
    }
    world.viewModel.currentSong = u"Short"_qs;
    world.settle();
    EXPECT_EQ(view->width(), width);
}

TEST_F(PanelLongTextTest, AMenuCutsALongNameAndTellsItWhole) {
    const QString name(100, u'W');
    world.sonos.rooms = QList<SonosRoom>{makeRoom(u"A"_qs, name), makeRoom(u"B"_qs, u"Bath"_qs)};
    showPanel();
    MenuButton* output = menuButtons(*view).at(1);
    output->openMenu();
    const QList<QAction*> lines = output->openedMenu()->actions();
    EXPECT_TRUE(lines.at(1)->text().endsWith(u'…')) << lines.at(1)->text().toStdString();
    EXPECT_TRUE(lines.at(1)->toolTip().contains(name));
    EXPECT_EQ(lines.at(2)->text(), u"Bath"_qs);
    EXPECT_LE(output->openedMenu()->width(), 480);
}

TEST_F(PanelLongTextTest, TheWholeOfALongTextAppearsOnHoverAndOnlyThen) {
    world.viewModel.currentSong = u"<b>Tom & Jerry</b> "_qs + QString(200, u'x');
    world.viewModel.nextSong = std::optional(u"Short"_qs);
    world.sonos.rooms = QList<SonosRoom>{makeRoom(u"A"_qs, QString(100, u'W'))};
    world.sonos.activeTarget = AudioOutputTarget::sonos(u"A"_qs);
    showPanel();
    const auto hover = [](QWidget* part) {
        QHelpEvent event(QEvent::ToolTip, part->rect().center(), part->mapToGlobal(part->rect().center()));
        QApplication::sendEvent(part, &event);
        QTextDocument shown;
        shown.setHtml(QToolTip::isVisible() ? QToolTip::text() : QString());
        // A tool tip that is told to hide lingers for a while.
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->inherits("QTipLabel"))
                delete window;
        }
        return shown.toPlainText();
    };
    for (ElidedLabel* label : partsOf<ElidedLabel>(*view)) {
        const QString expected = label->content().startsWith(u"<b>"_qs) ? label->content() : QString();
        EXPECT_EQ(hover(label), expected);
    }
    EXPECT_EQ(hover(menuButtons(*view).at(0)), QString());
    EXPECT_EQ(hover(menuButtons(*view).at(1)),
              QString(100, u'W') +
                  u"\nZofra plays independently; synchronization with Sonos is not guaranteed."_qs);
}

TEST_F(PanelLongTextTest, NothingIsCutAtAnyFontSizeInAnyLanguage) {
    world.viewModel.nextSong = std::optional(u"Next"_qs);
    for (const qreal points : {6.0, 10.0, 13.0, 18.0, 26.0}) {
        for (const AppLanguage language : allAppLanguages) {
            world.languages.setCurrentLanguage(language);
            view = world.makeView();
            QFont font = view->font();
            font.setPointSizeF(points);
            view->setFont(font);
            view->show();
            world.settle();
            for (const ElidedLabel* label : partsOf<ElidedLabel>(*view)) {
                EXPECT_FALSE(label->isElided()) << label->content().toStdString() << " at " << points;
                EXPECT_GE(label->height(), label->sizeHint().height()) << label->content().toStdString();
            }
            for (const QPushButton* button : view->findChildren<QPushButton*>()) {
                EXPECT_GE(button->width(), button->sizeHint().width())
                    << button->accessibleName().toStdString();
                EXPECT_GE(button->height(), button->sizeHint().height())
                    << button->accessibleName().toStdString();
                EXPECT_TRUE(
                    view->rect().contains(QRect(button->mapTo(view.get(), QPoint(0, 0)), button->size())));
            }
        }
    }
}

TEST_F(PanelLongTextTest, GrowsWithTheFontAndKeepsItsState) {
    world.loginItem.enabled = true;
    showPanel();
    const QSize small = view->size();
    QFont font = view->font();
    font.setPointSizeF(13.125);
    view->setFont(font);
    world.settle();
    EXPECT_NEAR(view->width(), small.width() * 1.25, 16);
    EXPECT_NEAR(view->height(), small.height() * 1.25, 20);
    EXPECT_TRUE(partOf<CheckBox>(*view)->isChecked());
    EXPECT_TRUE(partOf<CheckBox>(*view)->isVisible());
    EXPECT_TRUE(world.loginItem.calls.isEmpty());
}

TEST_F(PanelLongTextTest, FollowsTheFontOfTheWholeDesktop) {
    showPanel();
    menuButtons(*view).at(1)->openMenu();
    const int width = view->width();
    const QFont before = QApplication::font();
    QFont large = before;
    large.setPointSizeF(13.125);
    QApplication::setFont(large);
    world.settle();
    EXPECT_GT(view->width(), width);
    QApplication::setFont(before);
    world.settle();
    EXPECT_EQ(view->width(), width);
}

TEST_F(PanelLongTextTest, ALowScreenBringsTheRowsTogether) {
    const PanelMetrics high(QApplication::font(), 96, 800);
    const PanelMetrics low(QApplication::font(), 96, 440);
    EXPECT_EQ(high.gap(14), high.px(14));
    EXPECT_EQ(low.gap(14), low.px(8));
    EXPECT_EQ(low.px(14), 14) << "nothing becomes smaller";
    world.viewModel.nextSong = std::optional(u"Next"_qs);
    for (const AppLanguage language : allAppLanguages) {
        world.languages.setCurrentLanguage(language);
        QWidget panel;
        PanelLook look{PanelTheme::make({}, QApplication::palette()), low};
        PanelParts parts(panel, look, u"1.0 (Build 1)"_qs);
        parts.show(world.state());
        // Of 480 lines a panel of the desktop and a window's frame take some fifty.
        EXPECT_LE(panel.layout()->totalHeightForWidth(parts.width()), 430)
            << rawValue(language).toStdString();
    }
}

TEST_F(PanelLongTextTest, ALanguageDoesNotChangeTheWidth) {
    for (const qreal points : {10.0, 26.0}) {
        showPanel();
        QFont font = view->font();
        font.setPointSizeF(points);
        view->setFont(font);
        world.settle();
        const int width = view->width();
        for (const AppLanguage language : allAppLanguages) {
            world.languages.setCurrentLanguage(language);
            world.settle();
            EXPECT_EQ(view->width(), width) << rawValue(language).toStdString();
        }
    }
}

TEST_F(PanelLongTextTest, NeverOutgrowsTheScreen) {
    world.viewModel.nextSong = std::optional(u"Next"_qs);
    showPanel();
    QFont font = view->font();
    font.setPointSizeF(60);
    view->setFont(font);
    world.settle();
    EXPECT_LE(view->height(), view->screen()->availableGeometry().height());
    EXPECT_GT(view->height(), view->screen()->availableGeometry().height() * 3 / 4);
}

TEST_F(PanelLongTextTest, SongsThatReadFromRightToLeftStayInTheirLineAndAreCutAtTheirEnd) {
    const QString title = u"פתיחה – "_qs + QString(200, QChar(0x05D0));
    world.viewModel.currentSong = u"\u202E\u2067"_qs + title + u"\n\u0007"_qs;
    showPanel();
    const ElidedLabel* song = nullptr;
    for (const ElidedLabel* label : partsOf<ElidedLabel>(*view)) {
        if (label->content().startsWith(u"פתיחה"_qs))
            song = label;
    }
    ASSERT_NE(song, nullptr);
    EXPECT_EQ(song->content(), title + u"  "_qs) << "without what turns the lines around it";
    EXPECT_TRUE(song->isElided());
    EXPECT_EQ(view->layoutDirection(), Qt::LeftToRight);
    // The ellipsis stands on the left: there is nothing but three low dots.
    const QImage picture = const_cast<ElidedLabel*>(song)->grab().toImage();
    const auto highestInk = [&](int from, int to) {
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = from; x < to; ++x) {
                if (contrastRatio(picture.pixelColor(x, y), view->look().theme.card) > 3)
                    return y;
            }
        }
        return picture.height();
    };
    EXPECT_GT(highestInk(0, 8), picture.height() / 2);
    EXPECT_LT(highestInk(picture.width() - 40, picture.width()), picture.height() / 2);
    EXPECT_TRUE(view->rect().contains(QRect(song->mapTo(view.get(), QPoint(0, 0)), song->size())));
}

} // namespace
} // namespace zofra::test
