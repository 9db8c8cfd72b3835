// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Result.h"

#include <QByteArray>
#include <QUrl>

#include <optional>

namespace zofra {

/// The opening handshake of a web socket, RFC 6455 section 4, from the client's side. Pure code without a
/// socket.
class WebSocketHandshake {
public:
    /// `nonce`: 16 random bytes.
    WebSocketHandshake(QUrl url, const QByteArray& nonce);

    [[nodiscard]] QByteArray request() const;

    /// Takes what the server sends; absent while the answer is not whole. Then what already belongs to the
    /// open socket, or why there is none.
    [[nodiscard]] std::optional<Result<QByteArray>> receive(const QByteArray& bytes);

    /// What the server has to answer to `key`.
    [[nodiscard]] static QByteArray acceptFor(const QByteArray& key);

private:
    [[nodiscard]] Result<void> check(const QByteArray& head) const;

    QUrl m_url;
    QByteArray m_key;
    QByteArray m_received;
    /// Where the head begins that is being read, and how far its end has been looked for.
    qsizetype m_headStart = 0;
    qsizetype m_searched = 0;
};

} // namespace zofra
