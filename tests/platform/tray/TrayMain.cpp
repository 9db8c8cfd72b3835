// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>

#include <gmock/gmock.h>

// Menus are widgets and need an application; it draws nowhere.
int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleMock(&argc, argv);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
