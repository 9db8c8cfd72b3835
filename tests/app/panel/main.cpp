// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>
#include <QTemporaryFile>

#include <gmock/gmock.h>

// Widgets need an application object; screens that are seen they do not need. There are three, side by side.
int main(int argc, char** argv) {
    QTemporaryFile screens;
    if (!screens.open())
        return 1;
    screens.write(R"({"screens": [
        {"name": "left", "x": 0, "y": 0, "width": 800, "height": 800, "logicalDpi": 96, "dpr": 1},
        {"name": "right", "x": 800, "y": 0, "width": 1024, "height": 768, "logicalDpi": 96, "dpr": 1},
        {"name": "low", "x": 1824, "y": 0, "width": 800, "height": 480, "logicalDpi": 96, "dpr": 1}]})");
    screens.close();
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + screens.fileName().toUtf8());
    qunsetenv("QT_SCALE_FACTOR");
    qunsetenv("QT_STYLE_OVERRIDE");
    qunsetenv("QT_QPA_PLATFORMTHEME");
    ::testing::InitGoogleMock(&argc, argv);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
