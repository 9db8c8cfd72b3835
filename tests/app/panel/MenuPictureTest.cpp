// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StatusMenu.h"
#include "app/panel/MenuButton.h"
#include "app/panel/PanelMenuStyle.h"
#include "platform/linux/tray/WidgetMenu.h"
#include "tests/app/panel/GoldenPictures.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <tuple>

namespace zofra::test {
namespace {

/// The menus as they open.
class MenuPictureTest
    : public ::testing::TestWithParam<std::tuple<std::string, DesktopAppearance::ColorScheme>> {
protected:
    void SetUp() override {
        if (const auto reason = whyNoComparison(); !reason.empty())
            GTEST_SKIP() << reason;
    }
};

QImage menuPicture(PanelWorld& world, AboutPopupView& view, int index, qreal ratio = 2) {
    MenuButton* button = menuButtons(view).at(index);
    button->openMenu();
    world.settle();
    QImage image = picture(*button->openedMenu(), ratio);
    button->openedMenu()->close();
    return image;
}

QList<SonosRoom> rooms(int count) {
    QList<SonosRoom> made;
    for (int i = 1; i <= count; ++i)
        made << makeRoom(QStringLiteral("RINCON_%1").arg(i), QStringLiteral("Room %1").arg(i));
    return made;
}

/// Names that are long, written from right to left, and without spaces.
QList<SonosRoom> oddRooms() {
    return {
        makeRoom(QStringLiteral("RINCON_1"),
                 QStringLiteral("Wohn- und Esszimmer im zweiten Obergeschoss, Straßenseite, neben dem Bad")),
        makeRoom(QStringLiteral("RINCON_2"), QStringLiteral("חדר השינה של ההורים בקומה השנייה")),
        makeRoom(QStringLiteral("RINCON_3"), QStringLiteral("二階の寝室とその隣の書斎"))};
}

TEST_P(MenuPictureTest, LooksAsBefore) {
    const auto& [language, scheme] = GetParam();
    const QString code = QString::fromStdString(language);
    PanelWorld world(code);
    world.appearance.set({scheme, DesktopAppearance::Contrast::normal, std::nullopt});
    const auto view = world.makeView();
    view->setFont(pictureFont());
    view->show();
    world.settle();
    const QString suffix = QStringLiteral("-%1-%2").arg(code, schemeName(scheme));
    if (language == "en")
        expectGolden(menuPicture(world, *view, 0), QStringLiteral("menu-stations") + suffix);
    world.sonos.localNetworkDenied = true;
    expectGolden(menuPicture(world, *view, 1), QStringLiteral("menu-output-denied") + suffix);
    world.sonos.localNetworkDenied = false;
    world.sonos.rooms =
        QList<SonosRoom>{makeRoom(QStringLiteral("RINCON_1"), QStringLiteral("Kitchen & Bath")),
                         makeRoom(QStringLiteral("RINCON_2"), QStringLiteral("Wohnzimmer"))};
    world.sonos.activeTarget = AudioOutputTarget::sonos(QStringLiteral("RINCON_2"));
    world.settle();
    expectGolden(menuPicture(world, *view, 1), QStringLiteral("menu-output-rooms") + suffix);
}

TEST_P(MenuPictureTest, OfThirtyRoomsScrolls) {
    const auto& [language, scheme] = GetParam();
    if (language != "en")
        return;
    PanelWorld world(QString::fromStdString(language));
    world.appearance.set({scheme, DesktopAppearance::Contrast::normal, std::nullopt});
    world.sonos.rooms = rooms(30);
    const auto view = world.makeView();
    view->setFont(pictureFont());
    view->show();
    world.settle();
    expectGolden(menuPicture(world, *view, 1), QStringLiteral("menu-output-many-en-") + schemeName(scheme));
}

/// The drawings for the status bar's menu, in the panel's style.
class Symbols final : public IconProvider {
public:
    explicit Symbols(PanelWorld& world)
        : m_world(world) {}
    QImage image(const QString& symbolName, int pixels, const QColor& color) const override {
        return IconSet::image(symbolName, pixels, color);
    }
    std::shared_ptr<QStyle> menuStyle() const override {
        return std::make_shared<PanelMenuStyle>(PanelMetrics(pictureFont(), 96, 800), m_world.appearance);
    }

private:
    PanelWorld& m_world;
};

/// Sizes as the desktop's own font would give, for a menu and what is below it.
void setPictureFont(QMenu& menu) {
    menu.setFont(pictureFont());
    menu.ensurePolished();
    menu.adjustSize();
}

TEST_P(MenuPictureTest, OfTheStatusBarLooksAsBefore) {
    const auto& [language, scheme] = GetParam();
    const QString code = QString::fromStdString(language);
    PanelWorld world(code);
    world.appearance.set({scheme, DesktopAppearance::Contrast::normal, std::nullopt});
    RadioState state = world.state();
    state.isPlaying = true;
    state.currentSong = QStringLiteral("An Artist – A Song");
    state.nextSong = QStringLiteral("Another Artist – Another Song");
    state.volume = 0.8F;
    const Symbols symbols(world);
    WidgetMenu menu(statusMenu(state, world.languages, {}), symbols);
    setPictureFont(menu);
    menu.setActiveAction(menu.actions().at(1));
    const QString suffix = QStringLiteral("-%1-%2").arg(code, schemeName(scheme));
    expectGolden(picture(menu, 2), QStringLiteral("menu-status") + suffix);
    QMenu* output = menu.actions().at(2)->menu<QMenu*>();
    setPictureFont(*output);
    expectGolden(picture(*output, 2), QStringLiteral("menu-status-output") + suffix);
}

std::string menuTestName(const ::testing::TestParamInfo<MenuPictureTest::ParamType>& tested) {
    return std::get<0>(tested.param) + "_" + schemeName(std::get<1>(tested.param)).toStdString();
}

INSTANTIATE_TEST_SUITE_P(All, MenuPictureTest,
                         ::testing::Values(std::tuple("en", Scheme::light), std::tuple("en", Scheme::dark),
                                           std::tuple("nl", Scheme::light), std::tuple("fr", Scheme::dark),
                                           std::tuple("de", Scheme::light)),
                         menuTestName);

/// The panel's menus and the status bar's, with these rooms.
void drawMenus(const QString& language, const DesktopAppearance& appearance, const std::string& screen,
               const QList<SonosRoom>& found, const QString& name) {
    PanelWorld world(language);
    world.appearance.set(appearance);
    world.sonos.rooms = found;
    const auto view = world.makeView();
    view->setFont(pictureFont());
    view->centerOn(screenNamed(screen));
    view->show();
    world.settle();
    RadioState state = world.state();
    state.currentSong = found.isEmpty() ? QStringLiteral("An Artist – A Song") : found.last().name;
    const Symbols symbols(world);
    WidgetMenu menu(statusMenu(state, world.languages, {}), symbols);
    QMenu* output = menu.actions().at(2)->menu<QMenu*>();
    setPictureFont(menu);
    setPictureFont(*output);
    EXPECT_LE(menu.sizeHint().width(), 480) << name.toStdString();
    EXPECT_LE(output->sizeHint().width(), 480) << name.toStdString();
    for (const qreal ratio : scales()) {
        const QString suffix = name + QStringLiteral("-%1x").arg(ratio);
        leave(menuPicture(world, *view, 0, ratio), QStringLiteral("all-menu-stations") + suffix);
        leave(menuPicture(world, *view, 1, ratio), QStringLiteral("all-menu-output") + suffix);
        leave(picture(menu, ratio), QStringLiteral("all-menu-status") + suffix);
        leave(picture(*output, ratio), QStringLiteral("all-menu-tray-output") + suffix);
    }
    EXPECT_LE(menuButtons(*view).at(1)->openedMenu()->width(), 480) << name.toStdString();
    EXPECT_LE(menuButtons(*view).at(1)->openedMenu()->height(), view->screen()->availableGeometry().height())
        << name.toStdString();
}

TEST(MenuPicturesTest, FitTheScreenWhateverIsInThem) {
    for (const QString& language : allLanguages) {
        for (const DesktopAppearance& appearance : bothSchemes) {
            const QString name = QStringLiteral("-%1-%2").arg(language, schemeName(appearance.colorScheme));
            drawMenus(language, appearance, "left", {}, QStringLiteral("-none") + name);
            drawMenus(language, appearance, "left", oddRooms(), QStringLiteral("-odd") + name);
            drawMenus(language, appearance, "left", rooms(30), QStringLiteral("-thirty") + name);
            drawMenus(language, appearance, "low", rooms(30), QStringLiteral("-low-thirty") + name);
        }
    }
}

} // namespace
} // namespace zofra::test
