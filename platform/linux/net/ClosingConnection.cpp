// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/ClosingConnection.h"

#include <QCoreApplication>
#include <QSslSocket>
#include <QTimer>

#include <chrono>

namespace zofra {

using namespace std::chrono_literals;

void ClosingConnection::takeOver(std::unique_ptr<QSslSocket> transport, bool waitsForPeer) {
    auto* const socket = transport.release();
    // So that it ends with the program, if that comes first.
    socket->setParent(QCoreApplication::instance());
    if (!waitsForPeer || socket->state() != QAbstractSocket::ConnectedState) {
        socket->abort();
        socket->deleteLater();
        return;
    }
    QObject::connect(socket, &QSslSocket::readyRead, socket,
                     [socket] { socket->skip(socket->bytesAvailable()); });
    QObject::connect(socket, &QSslSocket::disconnected, socket, [socket] { socket->deleteLater(); });
    auto* const patience = new QTimer(socket);
    patience->setSingleShot(true);
    QObject::connect(patience, &QTimer::timeout, socket, [socket] {
        socket->abort();
        socket->deleteLater();
    });
    patience->start(2s);
}

} // namespace zofra
