// SPDX-License-Identifier: GPL-3.0-or-later
// What stands where in the panel, in which size and with which drawing.
#include "app/panel/CheckBox.h"
#include "app/panel/CreditLine.h"
#include "app/panel/ElidedLabel.h"
#include "app/panel/IconLabel.h"
#include "app/panel/LanguageButton.h"
#include "app/panel/PlayButton.h"
#include "app/panel/TextButton.h"
#include "app/panel/VolumeSlider.h"
#include "tests/app/panel/PanelWorld.h"

#include <QApplication>

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <utility>

namespace zofra::test {
namespace {

/// What a part is called in these tests; empty for what only holds others.
QString nameOf(const QWidget* part) {
    if (const auto* icon = dynamic_cast<const IconLabel*>(part))
        return icon->name();
    if (const auto* label = dynamic_cast<const ElidedLabel*>(part))
        return label->content();
    if (const auto* language = dynamic_cast<const LanguageButton*>(part))
        return language->help();
    if (const auto* menu = dynamic_cast<const MenuButton*>(part))
        return menu->title();
    if (const auto* play = dynamic_cast<const PlayButton*>(part))
        return play->title();
    if (const auto* link = dynamic_cast<const LinkButton*>(part))
        return link->title();
    if (const auto* button = dynamic_cast<const TextButton*>(part))
        return button->title();
    if (const auto* box = dynamic_cast<const CheckBox*>(part))
        return box->title();
    if (const auto* credit = dynamic_cast<const CreditLine*>(part))
        return credit->accessibleName();
    if (dynamic_cast<const VolumeSlider*>(part))
        return QStringLiteral("(slider)");
    return {};
}

class PanelLayoutTest : public ::testing::Test {
protected:
    PanelLayoutTest() {
        world.viewModel.currentSong = u"An Artist – A Song"_qs;
        world.viewModel.nextSong = std::optional(u"Next – One"_qs);
        view = world.makeView();
        view->show();
        world.settle();
        for (QWidget* part : view->findChildren<QWidget*>()) {
            const QString name = nameOf(part);
            if (!name.isEmpty() && part->isVisibleTo(view.get()))
                m_parts[name] = part;
        }
    }
    QRect place(const QString& name) const {
        const auto part = m_parts.find(name);
        if (part == m_parts.end()) {
            ADD_FAILURE() << "there is no " << name.toStdString();
            return {};
        }
        return {part->second->mapTo(view.get(), QPoint(0, 0)), part->second->size()};
    }
    template<typename Part>
    const Part& part(const QString& name) const {
        return dynamic_cast<const Part&>(*m_parts.at(name));
    }
    void expectFont(const QString& text, qreal size, QFont::Weight weight) const {
        const auto& style = part<ElidedLabel>(text).drawnAs();
        EXPECT_EQ(style.size, size) << text.toStdString();
        EXPECT_EQ(style.weight, weight) << text.toStdString();
    }

    PanelWorld world;
    std::unique_ptr<AboutPopupView> view;

private:
    std::map<QString, QWidget*> m_parts;
};

TEST_F(PanelLayoutTest, TheElementsStandInTheirOrder) {
    // Each line of the panel, from left to right.
    const QList<QStringList> lines{{u"ZofraLogo"_qs, u"Version 1.0 (Build 1)"_qs},
                                   {u"English"_qs, u"Nederlands"_qs, u"Français"_qs, u"Deutsch"_qs},
                                   {u"antenna.radiowaves.left.and.right"_qs, u"Station:"_qs, u"Qmusic"_qs},
                                   {u"music.note"_qs, u"NOW PLAYING"_qs},
                                   {u"An Artist – A Song"_qs},
                                   {u"forward.end.fill"_qs, u"UP NEXT"_qs},
                                   {u"Next – One"_qs},
                                   {u"hifispeaker.2.fill"_qs, u"Output:"_qs, u"This Mac"_qs},
                                   {u"Play"_qs, u"speaker.wave.2.fill"_qs},
                                   {u"(slider)"_qs, u"80 %"_qs},
                                   {u"Made with care by the Zofra Zofra team"_qs, u"Write to us"_qs},
                                   {u"Start automatically"_qs, u"Close Window"_qs}};
    int above = 0;
    for (const QStringList& line : lines) {
        int left = 0;
        int lowest = above;
        for (const QString& name : line) {
            const QRect at = place(name);
            EXPECT_GT(at.center().y(), above) << name.toStdString();
            EXPECT_GT(at.center().x(), left) << name.toStdString();
            EXPECT_TRUE(view->rect().contains(at)) << name.toStdString();
            left = at.center().x();
            lowest = std::max(lowest, at.center().y());
        }
        above = lowest;
    }
}

TEST_F(PanelLayoutTest, TheLogoIsFittedIntoThirtyEightPoints) {
    const auto& logo = part<IconLabel>(u"ZofraLogo"_qs).drawnAs();
    EXPECT_EQ(logo.size, 38);
    EXPECT_EQ(logo.cellWidth, 38);
    EXPECT_EQ(logo.cellHeight, 38);
}

TEST_F(PanelLayoutTest, TextsHaveTheirSizes) {
    expectFont(u"Version 1.0 (Build 1)"_qs, 13, QFont::Normal);
    expectFont(u"NOW PLAYING"_qs, 10, QFont::Bold);
    expectFont(u"UP NEXT"_qs, 10, QFont::Bold);
    EXPECT_EQ(part<ElidedLabel>(u"An Artist – A Song"_qs).drawnAs().size, 12);
    EXPECT_EQ(part<ElidedLabel>(u"Next – One"_qs).drawnAs().size, 12);
}

TEST_F(PanelLayoutTest, LeftAndRightEdgesAreInLine) {
    const int bleed = view->look().metrics.bleed();
    // As drawn, without the room for rings.
    const int left = place(u"Play"_qs).left() + bleed;
    for (const QString& name : {u"ZofraLogo"_qs, u"English"_qs, u"(slider)"_qs, u"Start automatically"_qs,
                                u"Made with care by the Zofra Zofra team"_qs,
                                u"antenna.radiowaves.left.and.right"_qs, u"hifispeaker.2.fill"_qs})
        EXPECT_EQ(place(name).left() + bleed, left) << name.toStdString();
    const int right = place(u"Close Window"_qs).right() - bleed;
    for (const QString& name : {u"Qmusic"_qs, u"This Mac"_qs, u"80 %"_qs, u"speaker.wave.2.fill"_qs})
        EXPECT_EQ(place(name).right() - bleed, right) << name.toStdString();
    EXPECT_EQ(left, view->width() - 1 - right);
}

TEST_F(PanelLayoutTest, WhatBelongsTogetherIsOnOneHeight) {
    const auto middle = [this](const QString& name) { return place(name).center().y(); };
    EXPECT_NEAR(middle(u"ZofraLogo"_qs), middle(u"Version 1.0 (Build 1)"_qs), 1);
    EXPECT_NEAR(middle(u"Station:"_qs), middle(u"Qmusic"_qs), 1);
    EXPECT_NEAR(middle(u"Output:"_qs), middle(u"This Mac"_qs), 1);
    EXPECT_NEAR(middle(u"Play"_qs), middle(u"speaker.wave.2.fill"_qs), 1);
    EXPECT_NEAR(middle(u"(slider)"_qs), middle(u"80 %"_qs), 1);
    EXPECT_NEAR(middle(u"Start automatically"_qs), middle(u"Close Window"_qs), 1);
}

/// Calls once, before the first thing that the toolkit does by itself after the panel was brought up to date.
class AfterRefresh final : public QObject {
public:
    AfterRefresh(const AboutPopupView& view, std::function<void()> look)
        : m_view(view)
        , m_before(view.refreshCount())
        , m_look(std::move(look)) {
        qApp->installEventFilter(this);
    }
    bool eventFilter(QObject*, QEvent* event) override {
        const bool isLater = event->type() == QEvent::LayoutRequest ||
                             event->type() == QEvent::UpdateRequest || event->type() == QEvent::Paint;
        if (isLater && m_look && m_view.refreshCount() > m_before)
            std::exchange(m_look, nullptr)();
        return false;
    }

private:
    const AboutPopupView& m_view;
    int m_before;
    std::function<void()> m_look;
};

TEST_F(PanelLayoutTest, ANewLanguageIsWhollyInItsPlaceBeforeItIsPainted) {
    bool hasLooked = false;
    const AfterRefresh after(*view, [&] {
        hasLooked = true;
        for (const QWidget* child : view->findChildren<QWidget*>()) {
            if (const auto* label = dynamic_cast<const ElidedLabel*>(child)) {
                EXPECT_FALSE(label->isElided()) << label->content().toStdString();
            }
        }
        for (const MenuButton* button : menuButtons(*view))
            EXPECT_GE(button->width(), button->sizeHint().width()) << button->title().toStdString();
    });
    world.languages.setCurrentLanguage(AppLanguage::de);
    world.settle();
    EXPECT_TRUE(hasLooked);
}

} // namespace
} // namespace zofra::test
