// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>

#include <gmock/gmock.h>

// Widgets need an application object; a screen they do not need.
int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qunsetenv("QT_SCALE_FACTOR");
    qunsetenv("QT_STYLE_OVERRIDE");
    qunsetenv("QT_QPA_PLATFORMTHEME");
    ::testing::InitGoogleMock(&argc, argv);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
