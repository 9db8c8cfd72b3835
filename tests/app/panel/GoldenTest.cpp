// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StatusMenu.h"
#include "app/panel/MenuButton.h"
#include "app/panel/PanelMenuStyle.h"
#include "platform/linux/tray/WidgetMenu.h"
#include "tests/app/panel/PanelImages.h"
#include "tests/app/panel/PanelWorld.h"

#include <QDir>
#include <QFile>
#include <QKeyEvent>

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <tuple>

namespace zofra::test {
namespace {

// Pictures are written anew with ZOFRA_UPDATE_GOLDEN=1; look at them before keeping them.
bool updatesGolden() {
    return qEnvironmentVariableIntValue("ZOFRA_UPDATE_GOLDEN") == 1;
}

QString goldenPath(const QString& name) {
    return QStringLiteral(ZOFRA_SOURCE_DIR "/tests/app/panel/golden/%1.png").arg(name);
}

/// What the panel shows.
enum class Scene {
    /// Nothing plays, nothing is known, no rooms.
    quiet,
    /// A station plays on this computer, the next song is known.
    playing,
    /// The longest texts: a room's and the songs'.
    longest,
};

QString nameOf(Scene scene) {
    switch (scene) {
    case Scene::quiet:
        return QStringLiteral("quiet");
    case Scene::playing:
        return QStringLiteral("playing");
    case Scene::longest:
        return QStringLiteral("longest");
    }
    return {};
}

void arrange(PanelWorld& world, Scene scene) {
    world.player.volume = 0.8F;
    if (scene == Scene::quiet)
        return;
    world.viewModel.currentSong = QStringLiteral("An Artist – A Song Whose Title Goes On A While");
    world.viewModel.nextSong = std::optional(QStringLiteral("Another Artist – Another Song"));
    if (scene == Scene::playing) {
        world.player.isPlaying = true;
        world.loginItem.enabled = true;
        return;
    }
    const QString roomName = QStringLiteral("Wohn- und Esszimmer im zweiten Obergeschoss, Straßenseite");
    world.sonos.rooms = QList<SonosRoom>{makeRoom(QStringLiteral("RINCON_1"), roomName)};
    world.sonos.activeTarget = AudioOutputTarget::sonos(QStringLiteral("RINCON_1"));
    world.sonos.isSonosPlaying = true;
    world.player.volume = 1.0F;
    world.viewModel.currentSong =
        QStringLiteral("The Band With The Longest Name In Town – <b>Tom & Jerry</b> (Ågot’s Extended "
                       "Version, Live at the Old Brewery)");
    world.viewModel.nextSong = world.viewModel.currentSong.get();
}

QImage pictureOf(PanelWorld& world, qreal ratio, qreal fontPixels = 14, int tabs = 0) {
    const auto view = world.makeView();
    view->setFont(pictureFont(fontPixels));
    view->show();
    view->activateWindow();
    PanelWorld::settle();
    for (int i = 0; i < tabs; ++i) {
        QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier);
        QApplication::sendEvent(QApplication::focusWidget(), &tab);
    }
    PanelWorld::settle();
    return picture(*view, ratio);
}

class PanelPicture
    : public ::testing::TestWithParam<std::tuple<std::string, DesktopAppearance::ColorScheme, int, Scene>> {
protected:
    void SetUp() override {
        if (const auto reason = whyNoComparison(); !reason.empty())
            GTEST_SKIP() << reason;
    }
};

QString schemeName(DesktopAppearance::ColorScheme scheme) {
    return scheme == DesktopAppearance::ColorScheme::dark ? QStringLiteral("dark") : QStringLiteral("light");
}

/// Compares with the picture kept under this name; one that differs is left in the temporary folder.
void expectGolden(const QImage& now, const QString& name) {
    if (updatesGolden()) {
        QDir().mkpath(QFileInfo(goldenPath(name)).path());
        ASSERT_TRUE(now.save(goldenPath(name), "PNG", 0));
    }
    const QImage golden = QImage(goldenPath(name)).convertToFormat(QImage::Format_RGB32);
    ASSERT_FALSE(golden.isNull()) << goldenPath(name).toStdString() << " is missing";
    if (looksTheSame(now, golden))
        return;
    const QString kept =
        QDir::temp().filePath(QStringLiteral("zofra-panel-") + name + QStringLiteral(".png"));
    now.save(kept);
    const auto found = difference(now, golden);
    FAIL() << name.toStdString() << ": " << (found ? found->pixels : -1)
           << " pixels differ; the new picture is " << kept.toStdString();
}

TEST_P(PanelPicture, LooksAsBefore) {
    const auto& [language, scheme, ratio, scene] = GetParam();
    const QString code = QString::fromStdString(language);
    PanelWorld world(code, scene == Scene::longest ? RadioStation::sudRadioBelgique : RadioStation::qmusic);
    world.appearance.set({scheme, DesktopAppearance::Contrast::normal, std::nullopt});
    arrange(world, scene);
    const QString name =
        QStringLiteral("%1-%2-%3-%4x").arg(nameOf(scene), code, schemeName(scheme)).arg(ratio);
    expectGolden(pictureOf(world, ratio), name);
}

std::string testName(const ::testing::TestParamInfo<PanelPicture::ParamType>& info) {
    const auto& [language, scheme, ratio, scene] = info.param;
    return nameOf(scene).toStdString() + "_" + language + "_" +
           (scheme == DesktopAppearance::ColorScheme::dark ? "dark" : "light") + "_" + std::to_string(ratio) +
           "x";
}

using Scheme = DesktopAppearance::ColorScheme;

INSTANTIATE_TEST_SUITE_P(All, PanelPicture,
                         ::testing::Combine(::testing::Values("en", "nl", "fr", "de"),
                                            ::testing::Values(Scheme::light, Scheme::dark),
                                            ::testing::Values(1, 2),
                                            ::testing::Values(Scene::quiet, Scene::playing, Scene::longest)),
                         testName);

/// What people need who see or move otherwise than most.
struct Special {
    std::string name;
    std::string language;
    DesktopAppearance appearance;
    qreal ratio = 1;
    qreal fontPixels = 14;
    /// How often Tab was pressed.
    int tabs = 0;
};

class SpecialPicture : public ::testing::TestWithParam<Special> {
protected:
    void SetUp() override {
        if (const auto reason = whyNoComparison(); !reason.empty())
            GTEST_SKIP() << reason;
    }
};

TEST_P(SpecialPicture, LooksAsBefore) {
    const Special& special = GetParam();
    PanelWorld world(QString::fromStdString(special.language));
    world.appearance.set(special.appearance);
    arrange(world, Scene::playing);
    expectGolden(pictureOf(world, special.ratio, special.fontPixels, special.tabs),
                 QString::fromStdString(special.name));
}

using Contrast = DesktopAppearance::Contrast;
const DesktopAppearance light{Scheme::light, Contrast::normal, std::nullopt};
const DesktopAppearance dark{Scheme::dark, Contrast::normal, std::nullopt};

INSTANTIATE_TEST_SUITE_P(
    All, SpecialPicture,
    ::testing::Values(Special{"large-de-light", "de", light, 1, 21},
                      Special{"large-fr-dark", "fr", dark, 1, 18},
                      Special{"one-and-a-half-nl-light", "nl", light, 1.5},
                      Special{"one-and-a-half-en-dark", "en", dark, 1.5},
                      Special{"contrast-en-light", "en", {Scheme::light, Contrast::high, std::nullopt}, 2},
                      Special{"contrast-en-dark", "en", {Scheme::dark, Contrast::high, std::nullopt}, 2},
                      Special{"blue-en-light", "en", {Scheme::light, Contrast::normal, QColor(0x3584e4)}, 2},
                      Special{"yellow-en-dark", "en", {Scheme::dark, Contrast::normal, QColor(0xf5c211)}, 2},
                      Special{"focus-language-en-light", "en", light, 2, 14, 2},
                      Special{"focus-output-en-dark", "en", dark, 2, 14, 6},
                      Special{"focus-play-en-light", "en", light, 2, 14, 7},
                      Special{"focus-volume-en-dark", "en", dark, 2, 14, 8},
                      Special{"focus-link-en-light", "en", light, 2, 14, 9},
                      Special{"focus-start-en-light", "en", light, 2, 14, 10},
                      Special{"focus-close-en-dark", "en", dark, 2, 14, 11}),
    [](const ::testing::TestParamInfo<Special>& tested) {
        std::string name = tested.param.name;
        std::replace(name.begin(), name.end(), '-', '_');
        return name;
    });

/// The menus as they open.
class MenuPicture : public ::testing::TestWithParam<std::tuple<std::string, DesktopAppearance::ColorScheme>> {
protected:
    void SetUp() override {
        if (const auto reason = whyNoComparison(); !reason.empty())
            GTEST_SKIP() << reason;
    }
};

QImage menuPicture(AboutPopupView& view, int index) {
    MenuButton* button = menuButtons(view).at(index);
    button->openMenu();
    PanelWorld::settle();
    QImage image = picture(*button->openedMenu(), 2);
    button->openedMenu()->close();
    return image;
}

TEST_P(MenuPicture, LooksAsBefore) {
    const auto& [language, scheme] = GetParam();
    const QString code = QString::fromStdString(language);
    PanelWorld world(code);
    world.appearance.set({scheme, DesktopAppearance::Contrast::normal, std::nullopt});
    const auto view = world.makeView();
    view->setFont(pictureFont());
    view->show();
    PanelWorld::settle();
    const QString suffix = QStringLiteral("-%1-%2").arg(code, schemeName(scheme));
    if (language == "en")
        expectGolden(menuPicture(*view, 0), QStringLiteral("menu-stations") + suffix);
    expectGolden(menuPicture(*view, 1), QStringLiteral("menu-output-none") + suffix);
    world.sonos.localNetworkDenied = true;
    expectGolden(menuPicture(*view, 1), QStringLiteral("menu-output-denied") + suffix);
    world.sonos.localNetworkDenied = false;
    world.sonos.rooms =
        QList<SonosRoom>{makeRoom(QStringLiteral("RINCON_1"), QStringLiteral("Kitchen & Bath")),
                         makeRoom(QStringLiteral("RINCON_2"), QStringLiteral("Wohnzimmer"))};
    world.sonos.activeTarget = AudioOutputTarget::sonos(QStringLiteral("RINCON_2"));
    PanelWorld::settle();
    expectGolden(menuPicture(*view, 1), QStringLiteral("menu-output-rooms") + suffix);
}

/// The drawings for the status bar's menu, in the panel's style.
class Symbols final : public IconProvider {
public:
    explicit Symbols(const PanelWorld& world)
        : m_world(world) {}
    QImage image(const QString& symbolName, int pixels, const QColor& color) const override {
        return m_world.icons.image(symbolName, pixels, color);
    }
    std::shared_ptr<QStyle> menuStyle() const override {
        return std::make_shared<PanelMenuStyle>(std::make_unique<PanelLook>(
            PanelLook{PanelTheme::make(m_world.appearance.current(), QApplication::palette()),
                      PanelMetrics(pictureFont(), 96, 800), m_world.icons}));
    }

private:
    const PanelWorld& m_world;
};

TEST_P(MenuPicture, OfTheStatusBarLooksAsBefore) {
    const auto& [language, scheme] = GetParam();
    const QString code = QString::fromStdString(language);
    PanelWorld world(code);
    world.appearance.set({scheme, DesktopAppearance::Contrast::normal, std::nullopt});
    RadioState state;
    state.isPlaying = true;
    state.language = world.languages.currentLanguage();
    state.station = RadioStation::qmusic;
    state.currentSong = QStringLiteral("An Artist – A Song");
    state.nextSong = QStringLiteral("Another Artist – Another Song");
    state.targetTitle = world.sonos.activeTargetTitle();
    state.volume = 0.8F;
    const Symbols symbols(world);
    WidgetMenu menu(statusMenu(state, world.languages, {}), symbols);
    const auto setFont = [](QMenu& one) {
        one.setFont(pictureFont());
        one.ensurePolished();
        one.adjustSize();
    };
    setFont(menu);
    menu.setActiveAction(menu.actions().at(1));
    const QString suffix = QStringLiteral("-%1-%2").arg(code, schemeName(scheme));
    expectGolden(picture(menu, 2), QStringLiteral("menu-status") + suffix);
    QMenu* volume = menu.actions().at(3)->menu<QMenu*>();
    setFont(*volume);
    expectGolden(picture(*volume, 2), QStringLiteral("menu-status-volume") + suffix);
}

std::string menuTestName(const ::testing::TestParamInfo<MenuPicture::ParamType>& tested) {
    return std::get<0>(tested.param) + "_" + schemeName(std::get<1>(tested.param)).toStdString();
}

INSTANTIATE_TEST_SUITE_P(All, MenuPicture,
                         ::testing::Combine(::testing::Values("en", "nl", "fr", "de"),
                                            ::testing::Values(Scheme::light, Scheme::dark)),
                         menuTestName);

} // namespace
} // namespace zofra::test
