// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Result.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>
#include <variant>

namespace zofra {

/// A message of a web socket: text or bytes.
using SocketMessage = std::variant<QString, QByteArray>;

/// Web-socket close codes, RFC 6455 section 7.4.1.
enum class SocketCloseCode : int { normalClosure = 1000 };

/// A web socket as the metadata model needs it. Used from the main thread; completion handlers may come on
/// any thread. Destroying it closes it, and no handler is called afterwards.
class RadioMetadataSocket {
public:
    using ReceiveHandler = std::function<void(Result<SocketMessage>)>;
    using SendHandler = std::function<void(Result<void>)>;

    virtual ~RadioMetadataSocket() = default;

    /// Starts connecting.
    virtual void resume() = 0;
    /// Closes with a close code and optional reason bytes.
    virtual void cancel(SocketCloseCode closeCode, std::optional<QByteArray> reason) = 0;
    /// Delivers the next message, or the error that ended the socket, once.
    virtual void receive(ReceiveHandler completionHandler) = 0;
    /// Sends one message, and tells how that went.
    virtual void send(SocketMessage message, SendHandler completionHandler) = 0;
};

/// Makes a socket for an address; it does not connect before `resume`.
using MakeWebSocket = std::function<std::shared_ptr<RadioMetadataSocket>(const QUrl&)>;

} // namespace zofra
