// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/panel/GoldenPictures.h"

#include <QKeyEvent>

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace zofra::test {
namespace {

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

} // namespace
} // namespace zofra::test
