// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/QtPopupWindow.h"

#include "tests/app/panel/PanelWorld.h"

#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QScreen>
#include <QWindow>

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

class QtPopupWindowTest : public ::testing::Test {
public:
    ~QtPopupWindowTest() override {
        window.reset();
        world.settle();
    }

protected:
    QtPopupWindowTest()
        : factory(world.environment()) {}

    void open() {
        window = factory.makeWindow({QStringLiteral("1.0 (Build 1)"),
                                     {world.viewModel, world.player, world.sonos, world.languages},
                                     [this] {
                                         world.calls << QStringLiteral("onClose");
                                         window->close();
                                     },
                                     world.controls});
        window->onWillClose = [this](PopupWindow& closing) {
            EXPECT_EQ(&closing, window.get());
            world.calls << QStringLiteral("willClose");
            window.reset();
        };
        window->setTitle(QStringLiteral("Zofra Zofra"));
        window->setStyle(3);
        window->center();
        window->makeKeyAndOrderFront();
        world.settle();
    }
    static QWidgetList windows() {
        QWidgetList shown;
        const auto all = QApplication::topLevelWidgets();
        for (QWidget* widget : all) {
            if (widget->isVisible())
                shown << widget;
        }
        return shown;
    }

    PanelWorld world;
    QtPopupWindowFactory factory;
    std::unique_ptr<PopupWindow> window;
};

TEST_F(QtPopupWindowTest, IsTitledAndClosableOnly) {
    open();
    ASSERT_EQ(windows().size(), 1);
    const QWidget* host = windows().first();
    EXPECT_EQ(host->windowTitle(), u"Zofra Zofra"_qs);
    const Qt::WindowFlags flags = host->windowFlags();
    EXPECT_TRUE(flags.testFlag(Qt::WindowTitleHint));
    EXPECT_TRUE(flags.testFlag(Qt::WindowCloseButtonHint));
    EXPECT_FALSE(flags.testFlag(Qt::WindowMinimizeButtonHint));
    EXPECT_FALSE(flags.testFlag(Qt::WindowMaximizeButtonHint));
    EXPECT_EQ(host->windowType(), Qt::Window);
    EXPECT_TRUE(host->isWindow());
}

TEST_F(QtPopupWindowTest, HasThePictureThatTaskBarsShow) {
    open();
    EXPECT_FALSE(windows().first()->windowIcon().pixmap(32, 32).isNull());
}

TEST_F(QtPopupWindowTest, IsAsLargeAsThePanelAndFollowsIt) {
    open();
    const QWidget* host = windows().first();
    EXPECT_EQ(host->minimumSize(), host->maximumSize());
    const int height = host->height();
    world.viewModel.nextSong = std::optional(u"Next"_qs);
    world.settle();
    EXPECT_GT(host->height(), height);
    EXPECT_EQ(host->minimumSize(), host->maximumSize());
}

TEST_F(QtPopupWindowTest, StandsInTheMiddleOfTheScreen) {
    open();
    const QPoint off = windows().first()->geometry().center() -
                       QGuiApplication::primaryScreen()->availableGeometry().center();
    EXPECT_LE(off.manhattanLength(), 4);
}

TEST_F(QtPopupWindowTest, OpensOnTheScreenOfThePointer) {
    ASSERT_GE(QGuiApplication::screens().size(), 2) << "the tests' own screens";
    for (QScreen* screen : QGuiApplication::screens()) {
        QCursor::setPos(QGuiApplication::primaryScreen(), screen->geometry().center() + QPoint(70, 30));
        open();
        EXPECT_TRUE(screen->geometry().contains(windows().first()->geometry()))
            << screen->name().toStdString();
        window.reset();
        world.settle();
    }
    QCursor::setPos(QGuiApplication::primaryScreen()->geometry().center());
}

TEST_F(QtPopupWindowTest, ComesForwardAgainWithoutASecondWindow) {
    open();
    window->makeKeyAndOrderFront();
    world.settle();
    EXPECT_EQ(windows().size(), 1);
}

TEST_F(QtPopupWindowTest, TellsOnceThatItCloses) {
    open();
    windows().first()->close();
    world.settle();
    EXPECT_EQ(world.calls, QStringList{u"willClose"_qs});
    EXPECT_TRUE(windows().isEmpty());
}

TEST_F(QtPopupWindowTest, ClosesByEscapeAndReturnThroughThePanel) {
    for (const int key : {int(Qt::Key_Escape), int(Qt::Key_Return)}) {
        world.calls.clear();
        open();
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(windows().first()->focusWidget(), &press);
        world.settle();
        EXPECT_EQ(world.calls, (QStringList{u"onClose"_qs, u"willClose"_qs})) << key;
        EXPECT_TRUE(windows().isEmpty());
    }
}

TEST_F(QtPopupWindowTest, EndsWithItsOwnerWithoutAWord) {
    open();
    window.reset();
    world.settle();
    EXPECT_TRUE(world.calls.isEmpty());
    EXPECT_TRUE(windows().isEmpty());
}

TEST_F(QtPopupWindowTest, PreparingTheFirstOneShowsNothingAndAsksNothing) {
    const auto before = QApplication::topLevelWidgets().size();
    world.defaults.writes.clear();
    const auto steps = factory.preparation({QStringLiteral("1.0 (Build 1)"),
                                            {world.viewModel, world.player, world.sonos, world.languages},
                                            [this] { world.calls << QStringLiteral("onClose"); },
                                            world.controls});
    EXPECT_GT(steps.size(), 4U);
    for (const auto& step : steps) {
        step();
        world.settle();
        EXPECT_TRUE(windows().isEmpty());
    }
    // What it was done with has gone, and neither the state nor the outside noticed.
    EXPECT_EQ(QApplication::topLevelWidgets().size(), before);
    EXPECT_TRUE(world.calls.isEmpty());
    EXPECT_EQ(world.loginItem.reads, 0);
    EXPECT_TRUE(world.http.requests.empty());
    EXPECT_TRUE(world.defaults.writes.empty());
    open();
    EXPECT_EQ(windows().size(), 1);
}

TEST_F(QtPopupWindowTest, ClosingItDoesNotEndTheProgram) {
    bool isOver = false;
    const auto connection =
        QObject::connect(qApp, &QGuiApplication::lastWindowClosed, qApp, [&isOver] { isOver = true; });
    open();
    windows().first()->close();
    world.settle();
    QObject::disconnect(connection);
    EXPECT_FALSE(isOver);
}

} // namespace
} // namespace zofra::test
