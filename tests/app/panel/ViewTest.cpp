// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/CheckBox.h"
#include "app/panel/ElidedLabel.h"
#include "app/panel/IconLabel.h"
#include "app/panel/LanguageButton.h"
#include "app/panel/PlayButton.h"
#include "app/panel/TextButton.h"
#include "app/panel/VolumeSlider.h"
#include "tests/app/panel/PaintCounter.h"
#include "tests/app/panel/PanelWorld.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>
#include <QTextDocument>
#include <QToolTip>

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

/// Children of the panel of one kind, in tab order of their making.
template<typename Part>
QList<Part*> partsOf(const QWidget& view) {
    QList<Part*> found;
    const auto children = view.findChildren<QWidget*>();
    for (QWidget* child : children) {
        if (auto* part = dynamic_cast<Part*>(child))
            found << part;
    }
    return found;
}

template<typename Part>
Part* partOf(const QWidget& view) {
    const QList<Part*> all = partsOf<Part>(view);
    return all.isEmpty() ? nullptr : all.first();
}

void press(QWidget* widget, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QKeyEvent down(QEvent::KeyPress, key, modifiers);
    QKeyEvent up(QEvent::KeyRelease, key, modifiers);
    QApplication::sendEvent(widget, &down);
    QApplication::sendEvent(widget, &up);
}

class PanelViewTest : public ::testing::Test {
protected:
    void showPanel() {
        view = world.makeView();
        view->show();
        view->activateWindow();
        PanelWorld::settle();
    }
    QStringList shownTexts() const {
        QStringList texts;
        for (const ElidedLabel* label : partsOf<ElidedLabel>(*view)) {
            if (label->isVisibleTo(view.get()))
                texts << label->content();
        }
        return texts;
    }

    PanelWorld world;
    std::unique_ptr<AboutPopupView> view;
};

TEST_F(PanelViewTest, ShowsItsElementsInEnglish) {
    world.viewModel.currentSong = u"An Artist – A Song"_qs;
    world.viewModel.nextSong = std::optional(u"Next – One"_qs);
    showPanel();
    EXPECT_EQ(shownTexts(),
              (QStringList{u"Version 1.0 (Build 1)"_qs, u"Station:"_qs, u"NOW PLAYING"_qs,
                           u"An Artist – A Song"_qs, u"UP NEXT"_qs, u"Next – One"_qs, u"Output:"_qs,
                           u"80 %"_qs, u"Made with care by the Zofra Zofra team"_qs}));
    EXPECT_EQ(menuButtons(*view).at(0)->title(), u"Qmusic"_qs);
    EXPECT_EQ(menuButtons(*view).at(1)->title(), u"This Mac"_qs);
    EXPECT_EQ(partOf<PlayButton>(*view)->title(), u"Play"_qs);
    EXPECT_EQ(partOf<LinkButton>(*view)->title(), u"Write to us"_qs);
    EXPECT_EQ(partOf<CheckBox>(*view)->title(), u"Start automatically"_qs);
    EXPECT_EQ(partOf<TextButton>(*view)->title(), u"Close Window"_qs);
}

TEST_F(PanelViewTest, HasAFlagForEachLanguageInTheirOrder) {
    showPanel();
    QStringList help;
    for (const LanguageButton* button : partsOf<LanguageButton>(*view)) {
        help << button->toolTip();
        EXPECT_EQ(button->isChecked(), button->language() == AppLanguage::en);
        EXPECT_EQ(button->mark(), button->language() == AppLanguage::en ? 1 : 0);
    }
    EXPECT_EQ(help, (QStringList{u"English"_qs, u"Nederlands"_qs, u"Français"_qs, u"Deutsch"_qs}));
}

TEST_F(PanelViewTest, AFlagChangesTheLanguageOfEverything) {
    world.viewModel.nextSong = std::optional(u"Next"_qs);
    showPanel();
    const QList<LanguageButton*> flags = partsOf<LanguageButton>(*view);
    flags.at(3)->click();
    PanelWorld::settle();
    EXPECT_EQ(world.languages.currentLanguage(), AppLanguage::de);
    EXPECT_EQ(shownTexts(), (QStringList{u"Version 1.0 (Build 1)"_qs, u"Sender:"_qs, u"JETZT LÄUFT"_qs,
                                         u"Loading..."_qs, u"ALS NÄCHSTES"_qs, u"Next"_qs, u"Ausgabe:"_qs,
                                         u"80 %"_qs, u"Mit Sorgfalt vom Zofra-Zofra-Team"_qs}));
    EXPECT_EQ(menuButtons(*view).at(1)->title(), u"Dieser Mac"_qs);
    EXPECT_EQ(partOf<PlayButton>(*view)->title(), u"Musik starten"_qs);
    EXPECT_EQ(partOf<CheckBox>(*view)->title(), u"Automatisch starten"_qs);
    EXPECT_EQ(partOf<TextButton>(*view)->title(), u"Fenster schließen"_qs);
    EXPECT_EQ(partOf<VolumeSlider>(*view)->accessibleName(), u"Lautstärke"_qs);
    EXPECT_TRUE(flags.at(3)->isChecked());
    EXPECT_FALSE(flags.at(0)->isChecked());
}

TEST_F(PanelViewTest, TheMarkMovesInAHundredAndFiftyMillisecondsSlowAtBothEnds) {
    showPanel();
    LanguageButton* french = partsOf<LanguageButton>(*view).at(2);
    french->click();
    PanelWorld::settle();
    EXPECT_LT(french->mark(), 1);
    EXPECT_EQ(french->fade().duration(), 150);
    const QEasingCurve curve = french->fade().easingCurve();
    EXPECT_LT(curve.valueForProgress(0.1), 0.1);
    EXPECT_NEAR(curve.valueForProgress(0.5), 0.5, 0.01);
    EXPECT_GT(curve.valueForProgress(0.9), 0.9);
}

TEST_F(PanelViewTest, UpNextIsThereOnlyWhenThereIsOne) {
    showPanel();
    EXPECT_FALSE(shownTexts().contains(u"UP NEXT"_qs));
    const int height = view->height();
    world.viewModel.nextSong = std::optional(u"Next"_qs);
    PanelWorld::settle();
    EXPECT_TRUE(shownTexts().contains(u"UP NEXT"_qs));
    EXPECT_GT(view->height(), height);
    world.viewModel.nextSong = std::nullopt;
    PanelWorld::settle();
    EXPECT_FALSE(shownTexts().contains(u"UP NEXT"_qs));
    EXPECT_EQ(view->height(), height);
}

TEST_F(PanelViewTest, PlayButtonAndSpeakerFollowWhoeverPlays) {
    showPanel();
    const auto* play = partOf<PlayButton>(*view);
    const IconLabel* speaker = nullptr;
    for (const IconLabel* icon : partsOf<IconLabel>(*view)) {
        if (icon->name() == u"speaker.wave.2.fill"_qs)
            speaker = icon;
    }
    ASSERT_NE(speaker, nullptr);
    EXPECT_EQ(play->iconName(), u"play.fill"_qs);
    EXPECT_EQ(speaker->ink(), IconLabel::Ink::dim);
    world.player.isPlaying = true;
    PanelWorld::settle();
    EXPECT_EQ(play->iconName(), u"stop.fill"_qs);
    EXPECT_EQ(play->title(), u"Stop"_qs);
    EXPECT_EQ(speaker->ink(), IconLabel::Ink::accent);
    world.sonos.activeTarget = AudioOutputTarget::sonosEverywhere();
    PanelWorld::settle();
    EXPECT_EQ(play->title(), u"Play"_qs);
    EXPECT_EQ(speaker->ink(), IconLabel::Ink::dim);
}

TEST_F(PanelViewTest, ThePlayButtonToggles) {
    showPanel();
    partOf<PlayButton>(*view)->click();
    EXPECT_TRUE(world.player.isPlaying);
    partOf<PlayButton>(*view)->click();
    EXPECT_FALSE(world.player.isPlaying);
}

TEST_F(PanelViewTest, ManyChangesOfOneTurnAreOneRefresh) {
    showPanel();
    const int before = view->refreshCount();
    world.player.isPlaying = true;
    world.player.volume = 0.4F;
    world.viewModel.currentSong = u"A"_qs;
    world.viewModel.nextSong = std::optional(u"B"_qs);
    world.sonos.rooms = QList<SonosRoom>{makeRoom(u"A"_qs, u"Bath"_qs)};
    world.languages.setCurrentLanguage(AppLanguage::nl);
    EXPECT_EQ(view->refreshCount(), before);
    PanelWorld::settle();
    EXPECT_EQ(view->refreshCount(), before + 1);
    EXPECT_TRUE(shownTexts().contains(u"NU BEZIG"_qs));
    PanelWorld::settle();
    EXPECT_EQ(view->refreshCount(), before + 1);
}

TEST_F(PanelViewTest, AChangeOfSongRepaintsTheSongAndNothingElse) {
    world.viewModel.nextSong = std::optional(u"Next"_qs);
    showPanel();
    PaintCounter paints;
    world.viewModel.currentSong = u"Quite Another Song"_qs;
    PanelWorld::settle();
    const ElidedLabel* song = nullptr;
    for (const ElidedLabel* label : partsOf<ElidedLabel>(*view)) {
        if (label->content() == u"Quite Another Song"_qs)
            song = label;
    }
    ASSERT_NE(song, nullptr);
    EXPECT_EQ(paints.of(song), 1);
    EXPECT_EQ(paints.all(), 1) << paints.names().toStdString();
}

TEST_F(PanelViewTest, EveryPartRepaintsByItself) {
    world.viewModel.nextSong = std::optional(u"Next"_qs);
    showPanel();
    int parts = 0;
    for (QWidget* part : view->findChildren<QWidget*>()) {
        if (!part->findChildren<QWidget*>().isEmpty())
            continue;
        ++parts;
        PaintCounter paints;
        part->update();
        PanelWorld::settle();
        EXPECT_EQ(paints.of(part), 1) << paints.names().toStdString();
        EXPECT_EQ(paints.all(), 1) << paints.names().toStdString();
    }
    EXPECT_GE(parts, 24);
}

TEST_F(PanelViewTest, NothingIsRepaintedWhenNothingDiffers) {
    showPanel();
    PaintCounter paints;
    world.viewModel.currentSong = world.viewModel.currentSong.get();
    world.player.volume = world.player.volume.get();
    world.sonos.isScanning = true;
    PanelWorld::settle();
    EXPECT_EQ(paints.all(), 0);
}

TEST_F(PanelViewTest, AChangeOfVolumeRepaintsSliderAndPercentageOnly) {
    showPanel();
    PaintCounter paints;
    world.player.volume = 0.4F;
    PanelWorld::settle();
    EXPECT_EQ(paints.of(partOf<VolumeSlider>(*view)), 1);
    EXPECT_EQ(paints.all(), 2) << paints.names().toStdString();
}

TEST_F(PanelViewTest, TheSliderShowsTheVolumeWithoutSettingIt) {
    showPanel();
    auto* slider = partOf<VolumeSlider>(*view);
    EXPECT_EQ(slider->value(), 80);
    world.defaults.writes.clear();
    world.player.volume = 0.625F;
    PanelWorld::settle();
    EXPECT_EQ(slider->value(), 62);
    EXPECT_TRUE(shownTexts().contains(u"62 %"_qs));
    EXPECT_TRUE(world.defaults.writes.empty());
    EXPECT_EQ(world.player.volume.get(), 0.625F);
}

TEST_F(PanelViewTest, TheSlidersRightEndIsExactlyOneAndAHundred) {
    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    world.sonos.activeTarget = AudioOutputTarget::sonos(u"RINCON_1"_qs);
    showPanel();
    auto* slider = partOf<VolumeSlider>(*view);
    const QPointF end(slider->width() - 1, slider->height() / 2.0);
    QMouseEvent down(QEvent::MouseButtonPress, end, slider->mapToGlobal(end), Qt::LeftButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(slider, &down);
    EXPECT_EQ(world.player.volume.get(), 1.0F);
    EXPECT_EQ(world.soapActions(), QStringList{u"SetVolume 100"_qs});
    const QPointF start(0, end.y());
    QMouseEvent move(QEvent::MouseMove, start, slider->mapToGlobal(start), Qt::LeftButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(slider, &move);
    QMouseEvent up(QEvent::MouseButtonRelease, start, slider->mapToGlobal(start), Qt::LeftButton,
                   Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(slider, &up);
    PanelWorld::settle();
    EXPECT_EQ(world.player.volume.get(), 0.0F);
    EXPECT_TRUE(shownTexts().contains(u"0 %"_qs));
    EXPECT_FALSE(slider->isSliderDown());
}

TEST_F(PanelViewTest, EveryStepOfTheSliderStaysWhereItWasPut) {
    showPanel();
    auto* slider = partOf<VolumeSlider>(*view);
    for (int percent = 0; percent <= 100; ++percent) {
        slider->setValue(percent);
        EXPECT_NEAR(world.player.volume.get(), static_cast<float>(percent) / 100.0F, 1e-6F);
        EXPECT_EQ(shownPercent(world.player.volume), percent);
        PanelWorld::settle();
        EXPECT_EQ(slider->value(), percent);
    }
    EXPECT_EQ(world.player.volume.get(), 1.0F);
}

TEST_F(PanelViewTest, ArrowsMoveTheSlider) {
    showPanel();
    auto* slider = partOf<VolumeSlider>(*view);
    press(slider, Qt::Key_Right);
    EXPECT_EQ(slider->value(), 82);
    EXPECT_EQ(world.player.volume.get(), 0.82F);
    press(slider, Qt::Key_Left);
    press(slider, Qt::Key_Left);
    EXPECT_EQ(slider->value(), 78);
    press(slider, Qt::Key_End);
    EXPECT_EQ(world.player.volume.get(), 1.0F);
    press(slider, Qt::Key_Home);
    EXPECT_EQ(world.player.volume.get(), 0.0F);
}

TEST_F(PanelViewTest, ReadsTheLoginItemWhenItAppearsAndNotBefore) {
    view = world.makeView();
    EXPECT_EQ(world.loginItem.reads, 0);
    EXPECT_FALSE(view->launchAtLogin());
    world.loginItem.enabled = true;
    view->show();
    EXPECT_TRUE(view->launchAtLogin());
    EXPECT_TRUE(partOf<CheckBox>(*view)->isChecked());
    EXPECT_TRUE(world.loginItem.calls.isEmpty());
    view->hide();
    world.loginItem.enabled = false;
    view->show();
    EXPECT_FALSE(view->launchAtLogin());
    EXPECT_FALSE(partOf<CheckBox>(*view)->isChecked());
    EXPECT_TRUE(world.loginItem.calls.isEmpty());
}

TEST_F(PanelViewTest, TheCheckBoxRegistersAndUnregisters) {
    showPanel();
    auto* box = partOf<CheckBox>(*view);
    box->click();
    EXPECT_TRUE(view->launchAtLogin());
    EXPECT_TRUE(box->isChecked());
    box->click();
    EXPECT_FALSE(view->launchAtLogin());
    EXPECT_EQ(world.loginItem.calls, (QStringList{u"register"_qs, u"unregister"_qs}));
}

TEST_F(PanelViewTest, TurningTheCheckBoxOnSendsNoRegistrationWhenThereIsOne) {
    showPanel();
    // Registered meanwhile by someone else.
    world.loginItem.enabled = true;
    partOf<CheckBox>(*view)->click();
    EXPECT_TRUE(world.loginItem.calls.isEmpty());
    EXPECT_TRUE(view->launchAtLogin());
}

TEST_F(PanelViewTest, AfterAFailureTheCheckBoxShowsWhatIsTrue) {
    showPanel();
    world.loginItem.failure = u"no room"_qs;
    partOf<CheckBox>(*view)->click();
    EXPECT_FALSE(partOf<CheckBox>(*view)->isChecked());
    EXPECT_FALSE(view->launchAtLogin());
    EXPECT_EQ(world.loginItem.calls, QStringList{u"register"_qs});
    ASSERT_EQ(world.output.lines.size(), 1U);
    EXPECT_EQ(world.output.lines[0], u"Error changing launch at login status: no room"_qs);
}

TEST_F(PanelViewTest, ClosesByButtonReturnAndEscape) {
    showPanel();
    partOf<TextButton>(*view)->click();
    EXPECT_EQ(world.calls.size(), 1);
    press(view.get(), Qt::Key_Return);
    EXPECT_EQ(world.calls.size(), 2);
    press(view.get(), Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_EQ(world.calls.size(), 3);
    press(view.get(), Qt::Key_Escape);
    EXPECT_EQ(world.calls, (QStringList{u"close"_qs, u"close"_qs, u"close"_qs, u"close"_qs}));
}

TEST_F(PanelViewTest, ReturnClosesFromSliderAndCheckBox) {
    showPanel();
    press(partOf<VolumeSlider>(*view), Qt::Key_Return);
    press(partOf<CheckBox>(*view), Qt::Key_Return);
    EXPECT_EQ(world.calls, (QStringList{u"close"_qs, u"close"_qs}));
    EXPECT_TRUE(world.loginItem.calls.isEmpty());
}

TEST_F(PanelViewTest, ReturnAndSpacePressTheButtonThatHasTheKeyboard) {
    showPanel();
    auto* play = partOf<PlayButton>(*view);
    play->setFocus(Qt::TabFocusReason);
    press(play, Qt::Key_Return);
    EXPECT_TRUE(world.player.isPlaying);
    press(play, Qt::Key_Space);
    EXPECT_FALSE(world.player.isPlaying);
    EXPECT_TRUE(world.calls.isEmpty());
}

TEST_F(PanelViewTest, TheMouseDoesNotMoveTheKeyboardSoThatReturnStillCloses) {
    showPanel();
    EXPECT_EQ(view->focusWidget(), view.get());
    for (const QPushButton* button : view->findChildren<QPushButton*>())
        EXPECT_EQ(button->focusPolicy(), Qt::TabFocus);
}

TEST_F(PanelViewTest, TabGoesFromTopToBottom) {
    showPanel();
    QStringList names;
    for (int i = 0; i < 12; ++i) {
        press(QApplication::focusWidget(), Qt::Key_Tab);
        names << QApplication::focusWidget()->accessibleName();
    }
    EXPECT_EQ(names,
              (QStringList{u"English"_qs, u"Nederlands"_qs, u"Français"_qs, u"Deutsch"_qs,
                           u"Station: Qmusic"_qs, u"Output: This Mac"_qs, u"Play"_qs, u"Volume"_qs,
                           u"Write to us"_qs, u"Start automatically"_qs, u"Close Window"_qs, u"English"_qs}));
}

TEST_F(PanelViewTest, MenusOpenWithTheKeyboard) {
    showPanel();
    MenuButton* station = menuButtons(*view).at(0);
    for (const int key : {int(Qt::Key_Space), int(Qt::Key_Return), int(Qt::Key_Down)}) {
        press(station, key);
        ASSERT_NE(station->openedMenu(), nullptr);
        EXPECT_TRUE(station->openedMenu()->isVisible()) << key;
        station->openedMenu()->close();
        EXPECT_FALSE(station->isDown());
    }
    EXPECT_TRUE(world.calls.isEmpty());
}

TEST_F(PanelViewTest, SpaceTurnsTheCheckBox) {
    showPanel();
    auto* box = partOf<CheckBox>(*view);
    box->setFocus(Qt::TabFocusReason);
    press(box, Qt::Key_Space);
    EXPECT_TRUE(box->isChecked());
    press(box, Qt::Key_Space);
    EXPECT_FALSE(box->isChecked());
    EXPECT_EQ(world.loginItem.calls, (QStringList{u"register"_qs, u"unregister"_qs}));
}

TEST_F(PanelViewTest, MenusAreLeftAndChosenFromWithTheKeyboard) {
    showPanel();
    MenuButton* station = menuButtons(*view).at(0);
    station->setFocus(Qt::TabFocusReason);
    press(station, Qt::Key_Space);
    PanelMenu* menu = station->openedMenu();
    ASSERT_TRUE(menu->isVisible());
    press(menu, Qt::Key_Escape);
    EXPECT_FALSE(menu->isVisible());
    EXPECT_TRUE(world.calls.isEmpty()) << "Escape closes the menu, not the panel";
    EXPECT_EQ(view->focusWidget(), station);
    press(station, Qt::Key_Space);
    press(menu, Qt::Key_Down);
    press(menu, Qt::Key_Return);
    EXPECT_FALSE(menu->isVisible());
    EXPECT_EQ(world.player.currentStation.get(), RadioStation(RadioStation::zofra));
    EXPECT_EQ(world.calls, QStringList{u"updateStatusBarButton"_qs});
}

TEST_F(PanelViewTest, WhoeverHasTheKeyboardIsSeen) {
    showPanel();
    const auto look = [this] { return view->grab().toImage(); };
    QImage before = look();
    for (int i = 0; i < 11; ++i) {
        press(QApplication::focusWidget(), Qt::Key_Tab);
        const QWidget* part = QApplication::focusWidget();
        const QImage now = look();
        const QRect place(part->mapTo(view.get(), QPoint(0, 0)), part->size());
        EXPECT_NE(now.copy(place), before.copy(place)) << part->accessibleName().toStdString();
        before = now;
    }
}

TEST_F(PanelViewTest, TellsScreenReadersWhatThingsAre) {
    world.player.isPlaying = true;
    world.loginItem.enabled = true;
    showPanel();
    const auto roleOf = [](QWidget* widget) { return QAccessible::queryAccessibleInterface(widget)->role(); };
    EXPECT_EQ(roleOf(partOf<PlayButton>(*view)), QAccessible::PushButton);
    EXPECT_EQ(roleOf(partOf<VolumeSlider>(*view)), QAccessible::Slider);
    EXPECT_EQ(roleOf(partOf<CheckBox>(*view)), QAccessible::CheckBox);
    EXPECT_TRUE(QAccessible::queryAccessibleInterface(partOf<CheckBox>(*view))->state().checked);
    EXPECT_TRUE(QAccessible::queryAccessibleInterface(partsOf<LanguageButton>(*view).at(0))->state().checked);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(partOf<VolumeSlider>(*view))
                  ->valueInterface()
                  ->currentValue()
                  .toInt(),
              80);
    for (ElidedLabel* label : partsOf<ElidedLabel>(*view)) {
        EXPECT_EQ(roleOf(label), QAccessible::StaticText);
        EXPECT_EQ(QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name), label->content());
    }
    EXPECT_EQ(menuButtons(*view).at(1)->accessibleDescription(),
              u"Zofra plays independently; synchronization with Sonos is not guaranteed."_qs);
}

TEST_F(PanelViewTest, LongAndHostileSongsAreCutAndReadWhole) {
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
    PanelWorld::settle();
    EXPECT_EQ(view->width(), width);
}

TEST_F(PanelViewTest, TheWholeOfALongTextAppearsOnHoverAndOnlyThen) {
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

TEST_F(PanelViewTest, NothingIsCutAtAnyFontSizeInAnyLanguage) {
    world.viewModel.nextSong = std::optional(u"Next"_qs);
    for (const qreal points : {6.0, 10.0, 13.0, 18.0, 26.0}) {
        for (const AppLanguage language : allAppLanguages) {
            world.languages.setCurrentLanguage(language);
            view = world.makeView();
            QFont font = view->font();
            font.setPointSizeF(points);
            view->setFont(font);
            view->show();
            PanelWorld::settle();
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

TEST_F(PanelViewTest, GrowsWithTheFontAndKeepsItsState) {
    world.loginItem.enabled = true;
    showPanel();
    const QSize small = view->size();
    QFont font = view->font();
    font.setPointSizeF(13.125);
    view->setFont(font);
    PanelWorld::settle();
    EXPECT_NEAR(view->width(), 360 * 1.25, 4);
    EXPECT_NEAR(view->height(), small.height() * 1.25, 20);
    EXPECT_TRUE(partOf<CheckBox>(*view)->isChecked());
    EXPECT_TRUE(partOf<CheckBox>(*view)->isVisible());
    EXPECT_TRUE(world.loginItem.calls.isEmpty());
}

TEST_F(PanelViewTest, FollowsTheFontOfTheWholeDesktop) {
    showPanel();
    menuButtons(*view).at(1)->openMenu();
    const int width = view->width();
    const QFont before = QApplication::font();
    QFont large = before;
    large.setPointSizeF(13.125);
    QApplication::setFont(large);
    PanelWorld::settle();
    EXPECT_GT(view->width(), width);
    QApplication::setFont(before);
    PanelWorld::settle();
    EXPECT_EQ(view->width(), width);
}

TEST_F(PanelViewTest, NeverOutgrowsTheScreen) {
    world.viewModel.nextSong = std::optional(u"Next"_qs);
    showPanel();
    QFont font = view->font();
    font.setPointSizeF(60);
    view->setFont(font);
    PanelWorld::settle();
    EXPECT_LE(view->height(), view->screen()->availableGeometry().height());
    EXPECT_GT(view->height(), view->screen()->availableGeometry().height() * 3 / 4);
}

TEST_F(PanelViewTest, FollowsTheDesktopsAppearance) {
    showPanel();
    EXPECT_FALSE(view->look().theme.isDark);
    PaintCounter paints;
    DesktopAppearance appearance;
    appearance.colorScheme = DesktopAppearance::ColorScheme::dark;
    appearance.accent = QColor(0x3584e4);
    world.appearance.set(appearance);
    PanelWorld::settle();
    EXPECT_TRUE(view->look().theme.isDark);
    EXPECT_GT(paints.of(partOf<PlayButton>(*view)), 0);
    paints.forget();
    world.appearance.set(appearance);
    PanelWorld::settle();
    EXPECT_EQ(paints.all(), 0);
}

TEST_F(PanelViewTest, ANewAppearanceRepaintsEveryPart) {
    world.viewModel.nextSong = std::optional(u"Next"_qs);
    showPanel();
    PaintCounter paints;
    DesktopAppearance appearance;
    appearance.colorScheme = DesktopAppearance::ColorScheme::dark;
    world.appearance.set(appearance);
    PanelWorld::settle();
    EXPECT_GT(paints.of(view.get()), 0);
    for (QWidget* part : view->findChildren<QWidget*>()) {
        if (part->isVisible() && part->findChildren<QWidget*>().isEmpty()) {
            EXPECT_GT(paints.of(part), 0) << part->accessibleName().toStdString();
        }
    }
}

TEST_F(PanelViewTest, SongsThatReadFromRightToLeftStayInTheirLineAndAreCutAtTheirEnd) {
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
    EXPECT_TRUE(view->rect().contains(QRect(song->mapTo(view.get(), QPoint(0, 0)), song->size())));
}

TEST_F(PanelViewTest, CanEndWithARefreshPendingAndAMenuOpen) {
    showPanel();
    menuButtons(*view).at(1)->openMenu();
    world.player.isPlaying = true;
    view.reset();
    PanelWorld::settle();
    world.player.isPlaying = false;
    PanelWorld::settle();
    SUCCEED();
}

} // namespace
} // namespace zofra::test
