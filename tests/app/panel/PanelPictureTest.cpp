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
#include <QScreen>

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
    /// Songs that are written from right to left, and without spaces.
    otherScripts,
};

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
    if (scene == Scene::otherScripts) {
        world.viewModel.currentSong =
            QStringLiteral("להקה – שיר שהכותרת שלו נמשכת ונמשכת עד שאין לה עוד מקום בשורה");
        world.viewModel.nextSong =
            std::optional(QStringLiteral("歌手 – 曲名がとても長くて一行にはどうしても入りきらない歌のこと"));
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

QString schemeName(DesktopAppearance::ColorScheme scheme) {
    return scheme == DesktopAppearance::ColorScheme::dark ? QStringLiteral("dark") : QStringLiteral("light");
}

/// One of sixteen steps of a channel, well within what a comparison tolerates.
int coarse(int channel) {
    return (channel * 15 + 127) / 255 * 17;
}

/// A picture as it is kept: in few colours.
QImage inFewColors(const QImage& image) {
    QList<QRgb> colors;
    QImage kept(image.size(), QImage::Format_Indexed8);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb exact = image.pixel(x, y);
            const QRgb color = qRgb(coarse(qRed(exact)), coarse(qGreen(exact)), coarse(qBlue(exact)));
            qsizetype index = colors.indexOf(color);
            if (index < 0) {
                index = colors.size();
                colors << color;
            }
            if (index > 255)
                return image;
            kept.scanLine(y)[x] = static_cast<uchar>(index);
        }
    }
    kept.setColorTable(colors);
    return kept;
}

/// Compares with the picture kept under this name; one that differs is left in the temporary folder.
void expectGolden(const QImage& now, const QString& name) {
    if (updatesGolden()) {
        QDir().mkpath(QFileInfo(goldenPath(name)).path());
        ASSERT_TRUE(inFewColors(now).save(goldenPath(name), "PNG", 0));
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

using Scheme = DesktopAppearance::ColorScheme;
using Contrast = DesktopAppearance::Contrast;
const DesktopAppearance light{Scheme::light, Contrast::normal, std::nullopt};
const DesktopAppearance dark{Scheme::dark, Contrast::normal, std::nullopt};

/// One picture of the panel.
struct Picture {
    std::string name;
    std::string language;
    DesktopAppearance appearance;
    qreal ratio = 1;
    Scene scene = Scene::playing;
    qreal fontPixels = 14;
    /// How often Tab was pressed; the button that closes has the keyboard first.
    int tabs = 0;
    /// Of the screens of this program: "left", "right" or "low".
    std::string screen = "left";
};

/// Leaves a picture for whoever looks at all of them, if somebody does.
void leave(const QImage& image, const QString& name) {
    const QString folder = qEnvironmentVariable("ZOFRA_PICTURES");
    if (!folder.isEmpty()) {
        ASSERT_TRUE(image.save(QDir(folder).filePath(name + QStringLiteral(".png")), "PNG", 90));
    }
}

/// Scales to draw at: all of them for whoever looks.
std::vector<qreal> scales() {
    return qEnvironmentVariableIsEmpty("ZOFRA_PICTURES") ? std::vector<qreal>{1}
                                                         : std::vector<qreal>{1, 1.5, 2};
}

QScreen* screenNamed(const std::string& name) {
    const auto all = QGuiApplication::screens();
    const auto found = std::find_if(all.begin(), all.end(), [&name](const QScreen* screen) {
        return screen->name() == QString::fromStdString(name);
    });
    return found == all.end() ? nullptr : *found;
}

class PanelPictureTest : public ::testing::TestWithParam<Picture> {
protected:
    void SetUp() override {
        if (const auto reason = whyNoComparison(); !reason.empty())
            GTEST_SKIP() << reason;
    }
};

TEST_P(PanelPictureTest, LooksAsBefore) {
    const Picture& asked = GetParam();
    if (const auto reason = whyNoOtherScripts(); asked.scene == Scene::otherScripts && !reason.empty())
        GTEST_SKIP() << reason;
    const auto station =
        asked.scene == Scene::longest ? RadioStation::sudRadioBelgique : RadioStation::qmusic;
    PanelWorld world(QString::fromStdString(asked.language), station,
                     asked.scene == Scene::quiet ? PanelWorld::OnAir::loading : PanelWorld::OnAir::known);
    world.appearance.set(asked.appearance);
    arrange(world, asked.scene);
    const auto view = world.makeView();
    view->setFont(pictureFont(asked.fontPixels));
    view->centerOn(screenNamed(asked.screen));
    view->show();
    view->activateWindow();
    world.settle();
    for (int i = 0; i < asked.tabs; ++i) {
        QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier);
        QApplication::sendEvent(QApplication::focusWidget(), &tab);
    }
    world.settle();
    const QImage image = picture(*view, asked.ratio);
    EXPECT_LE(view->height(), view->screen()->availableGeometry().height() - 50) << "frame and panel";
    expectGolden(image, QString::fromStdString(asked.name));
}

INSTANTIATE_TEST_SUITE_P(
    All, PanelPictureTest,
    ::testing::Values(
        Picture{"quiet-en-light-2x", "en", light, 2, Scene::quiet},
        Picture{"quiet-de-dark-1x", "de", dark, 1, Scene::quiet},
        Picture{"playing-en-light-1x", "en", light, 1}, Picture{"playing-en-light-2x", "en", light, 2},
        Picture{"playing-en-dark-2x", "en", dark, 2}, Picture{"playing-nl-light-2x", "nl", light, 2},
        Picture{"playing-fr-light-2x", "fr", light, 2}, Picture{"playing-de-dark-2x", "de", dark, 2},
        Picture{"longest-de-light-2x", "de", light, 2, Scene::longest},
        Picture{"longest-fr-dark-1x", "fr", dark, 1, Scene::longest},
        Picture{"other-scripts-en-light-2x", "en", light, 2, Scene::otherScripts},
        Picture{"other-scripts-fr-dark-2x", "fr", dark, 2, Scene::otherScripts},
        Picture{"low-screen-fr-light", "fr", light, 1, Scene::playing, 14, 0, "low"},
        Picture{"large-de-light", "de", light, 1, Scene::playing, 21},
        Picture{"large-fr-dark", "fr", dark, 1, Scene::playing, 18},
        Picture{"one-and-a-half-nl-light", "nl", light, 1.5},
        Picture{"one-and-a-half-en-dark", "en", dark, 1.5},
        Picture{"contrast-en-light", "en", {Scheme::light, Contrast::high, std::nullopt}, 2},
        Picture{"contrast-en-dark", "en", {Scheme::dark, Contrast::high, std::nullopt}, 2},
        Picture{"blue-en-light", "en", {Scheme::light, Contrast::normal, QColor(0x3584e4)}, 2},
        Picture{"yellow-en-dark", "en", {Scheme::dark, Contrast::normal, QColor(0xf5c211)}, 2},
        Picture{"focus-language-en-light", "en", light, 2, Scene::playing, 14, 1},
        Picture{"focus-output-en-dark", "en", dark, 2, Scene::playing, 14, 3},
        Picture{"focus-play-en-light", "en", light, 2, Scene::playing, 14, 4},
        Picture{"focus-volume-en-dark", "en", dark, 2, Scene::playing, 14, 5},
        Picture{"focus-link-en-light", "en", light, 2, Scene::playing, 14, 6},
        Picture{"focus-start-en-light", "en", light, 2, Scene::playing, 14, 7}),
    [](const ::testing::TestParamInfo<Picture>& tested) {
        std::string name = tested.param.name;
        std::replace(name.begin(), name.end(), '-', '_');
        return name;
    });

const std::vector<QString> allLanguages{QStringLiteral("en"), QStringLiteral("nl"), QStringLiteral("fr"),
                                        QStringLiteral("de")};
const std::vector<DesktopAppearance> bothSchemes{light, dark};

/// The panel in every scene, language and colour, on a screen of this name.
void drawAll(const std::string& screen) {
    const std::vector<std::pair<Scene, QString>> scenes{{Scene::quiet, QStringLiteral("quiet")},
                                                        {Scene::playing, QStringLiteral("playing")},
                                                        {Scene::longest, QStringLiteral("longest")},
                                                        {Scene::otherScripts, QStringLiteral("scripts")}};
    int width = 0;
    for (const auto& [scene, sceneName] : scenes) {
        for (const QString& language : allLanguages) {
            for (const DesktopAppearance& appearance : bothSchemes) {
                PanelWorld world(language, RadioStation::qmusic,
                                 scene == Scene::quiet ? PanelWorld::OnAir::loading
                                                       : PanelWorld::OnAir::known);
                world.appearance.set(appearance);
                arrange(world, scene);
                const auto view = world.makeView();
                view->setFont(pictureFont());
                view->centerOn(screenNamed(screen));
                view->show();
                world.settle();
                const QString name = QStringLiteral("all-%1-%2-%3-%4")
                                         .arg(QString::fromStdString(screen), sceneName, language,
                                              schemeName(appearance.colorScheme));
                EXPECT_LE(view->height(), view->screen()->availableGeometry().height() - 50)
                    << name.toStdString();
                width = width == 0 ? view->width() : width;
                EXPECT_EQ(view->width(), width) << name.toStdString();
                for (const qreal ratio : scales())
                    leave(picture(*view, ratio), name + QStringLiteral("-%1x").arg(ratio));
            }
        }
    }
}

TEST(PanelPicturesTest, AreOfOneWidthAndFitTheScreenWhateverIsShown) {
    drawAll("left");
    drawAll("low");
}

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
        return m_world.icons.image(symbolName, pixels, color);
    }
    std::shared_ptr<QStyle> menuStyle() const override {
        return std::make_shared<PanelMenuStyle>(
            std::make_unique<PanelLook>(
                PanelLook{PanelTheme::make(m_world.appearance.current(), QApplication::palette()),
                          PanelMetrics(pictureFont(), 96, 800), m_world.icons}),
            m_world.appearance);
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
