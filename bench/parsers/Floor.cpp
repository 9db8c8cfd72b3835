// SPDX-License-Identifier: GPL-3.0-or-later
// The least that a status-bar program of this toolkit can be: an application object, a connection to the bus
// and a name there.
#include <QApplication>
#include <QDBusConnection>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QDBusConnection::sessionBus().registerService(QStringLiteral("be.zofra.Floor"));
    return QApplication::exec();
}
