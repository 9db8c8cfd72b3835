// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/LiveTrack.h"
#include "platform/RadioMetadataSocket.h"
#include "stations/RadioStation.h"

#include <QString>
#include <QUrl>

#include <optional>

namespace zofra {

// The wire of the live feed: SockJS frames over a web socket. Pure functions, callable from any thread.

/// What a frame (the text of one web-socket message) says.
enum class SockJSFrameKind { open, heartbeat, close, array, unknown };
[[nodiscard]] SockJSFrameKind sockJSFrameKind(const QString& text);

/// The text of a message; absent for bytes that are no UTF-8.
[[nodiscard]] std::optional<QString> textIn(const SocketMessage& message);

/// The last usable track for `station` in an array frame. Events that name another station are skipped; an
/// event that names none is meant for everyone.
[[nodiscard]] std::optional<ZofraLiveTrackData> liveTrackInFrame(const QString& text, RadioStation station);

/// What subscribes to the station's plays: a JSON array holding one string, which holds a JSON object. Absent
/// for a station without a live feed.
[[nodiscard]] std::optional<QString> joinMessage(RadioStation station);

/// The address of a fresh session: a random server number from 100 to 999 and a random session id of 32
/// lower-case hexadecimal characters. Absent when `host` (host or host:port) does not make an address.
[[nodiscard]] std::optional<QUrl> liveSocketUrl(const QString& host);

} // namespace zofra
