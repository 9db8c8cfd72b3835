// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/net/WebSocketHandshake.h"
#include "tests/platform/net/LoopbackServer.h"

#include <QByteArray>
#include <QtEndian>

#include <array>
#include <cstdint>

namespace zofra::test {

enum class Part { last, notLast };

/// A frame as a server sends it.
inline QByteArray serverFrame(std::uint8_t opcode, const QByteArray& payload, Part part = Part::last) {
    QByteArray frame;
    frame.append(static_cast<char>((part == Part::last ? 0x80U : 0U) | opcode));
    const auto append = [&frame](auto number) {
        std::array<char, sizeof number> bytes{};
        qToBigEndian(number, bytes.data());
        frame.append(bytes.data(), bytes.size());
    };
    if (payload.size() < 126) {
        frame.append(static_cast<char>(payload.size()));
    } else if (payload.size() <= 0xffff) {
        frame.append(126);
        append(static_cast<quint16>(payload.size()));
    } else {
        frame.append(127);
        append(static_cast<quint64>(payload.size()));
    }
    return frame + payload;
}

/// Reads the client's request and returns the answer that opens the socket.
inline QByteArray upgradeAnswer(ServerConnection& connection) {
    const auto head = connection.readUntil("\r\n\r\n");
    const QByteArray name = "Sec-WebSocket-Key: ";
    const auto at = head.indexOf(name) + name.size();
    const auto key = head.mid(at, head.indexOf("\r\n", at) - at); // nothing when the peer is gone
    return "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: "
           "Upgrade\r\nSec-WebSocket-Accept: " +
           WebSocketHandshake::acceptFor(key) + "\r\n\r\n";
}

} // namespace zofra::test
