// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Result.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QList>
#include <QRegularExpression>
#include <QUrl>

#include <algorithm>
#include <optional>
#include <utility>

namespace zofra {

/// The opening handshake of a web socket, RFC 6455 section 4, from the client's side. Pure code without a
/// socket.
class WebSocketHandshake {
public:
    /// `nonce`: 16 random bytes.
    WebSocketHandshake(QUrl url, const QByteArray& nonce)
        : m_url(std::move(url))
        , m_key(nonce.toBase64()) {}

    [[nodiscard]] QByteArray request() const {
        auto target = m_url.path(QUrl::FullyEncoded).toLatin1();
        if (target.isEmpty())
            target = "/";
        if (m_url.hasQuery())
            target += '?' + m_url.query(QUrl::FullyEncoded).toLatin1();
        QUrl host = m_url;
        host.setUserInfo({});
        return "GET " + target + " HTTP/1.1\r\nHost: " + host.authority(QUrl::FullyEncoded).toLatin1() +
               "\r\nUpgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Key: " + m_key +
               "\r\nSec-WebSocket-Version: 13\r\nUser-Agent: Mozilla/5.0\r\n\r\n";
    }

    /// Takes what the server sends; absent while the answer is not whole. Then what already belongs to the
    /// open socket, or why there is none.
    [[nodiscard]] std::optional<Result<QByteArray>> receive(const QByteArray& bytes) {
        const QByteArray endOfHead = "\r\n\r\n";
        m_received += bytes;
        while (true) {
            // The end may lie across two pieces; what was searched before need not be searched again.
            const auto end = m_received.indexOf(endOfHead, m_searched);
            const auto earliestEnd = std::max(m_headStart, m_received.size() - endOfHead.size() + 1);
            if ((end < 0 ? earliestEnd : end) > maxAnswerBytes)
                return failure(u"The server's answer is too long."_qs);
            if (end < 0) {
                m_searched = earliestEnd;
                return std::nullopt;
            }
            const auto head = m_received.sliced(m_headStart, end - m_headStart);
            m_headStart = m_searched = end + endOfHead.size();
            // An interim answer only announces another one.
            const auto status = statusOf(head);
            if (status.startsWith('1') && status != "101")
                continue;
            return check(head).map([this] { return m_received.sliced(m_headStart); });
        }
    }

    /// What the server has to answer to `key`.
    [[nodiscard]] static QByteArray acceptFor(const QByteArray& key) {
        return QCryptographicHash::hash(key + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11",
                                        QCryptographicHash::Sha1)
            .toBase64();
    }

private:
    static constexpr qsizetype maxAnswerBytes = 16'384;

    /// The values of every header `name`, joined with commas as if they stood in one line; absent when there
    /// is none.
    [[nodiscard]] static std::optional<QByteArray> headerValue(const QList<QByteArray>& lines,
                                                               const QByteArray& name) {
        std::optional<QByteArray> value;
        for (const auto& line : lines) {
            const auto colon = line.indexOf(':');
            if (colon < 0 || line.first(colon).compare(name, Qt::CaseInsensitive) != 0)
                continue;
            const auto more = line.sliced(colon + 1).trimmed();
            value = value ? *value + ',' + more : more;
        }
        return value;
    }
    [[nodiscard]] static bool hasToken(const std::optional<QByteArray>& value, const QByteArray& token) {
        const auto tokens = value.value_or(QByteArray()).split(',');
        return std::ranges::any_of(tokens, [&token](const QByteArray& one) {
            return one.trimmed().compare(token, Qt::CaseInsensitive) == 0;
        });
    }
    /// The three digits of a status line; empty when it is none.
    [[nodiscard]] static QByteArray statusOf(const QByteArray& head) {
        static const QRegularExpression line(uR"(^HTTP/1\.1 (\d{3})(?:[ \r\n]|$))"_qs);
        return line.match(QString::fromLatin1(head)).captured(1).toLatin1();
    }
    [[nodiscard]] Result<void> check(const QByteArray& head) const {
        const auto lines = head.split('\n');
        const auto status = statusOf(head);
        if (status.isEmpty())
            return failure(u"The server does not speak HTTP."_qs);
        if (status != "101")
            return failure(u"The server answered with status "_qs + QString::fromLatin1(status) +
                           u" instead of opening a web socket."_qs);
        // Neither extensions nor sub-protocols were offered, so none may be chosen.
        if (!hasToken(headerValue(lines, "Upgrade"), "websocket") ||
            !hasToken(headerValue(lines, "Connection"), "upgrade") ||
            headerValue(lines, "Sec-WebSocket-Accept") != acceptFor(m_key) ||
            !headerValue(lines, "Sec-WebSocket-Extensions").value_or(QByteArray()).isEmpty() ||
            headerValue(lines, "Sec-WebSocket-Protocol").has_value())
            return failure(u"The server's answer does not open a web socket."_qs);
        return {};
    }

    QUrl m_url;
    QByteArray m_key;
    QByteArray m_received;
    /// Where the head begins that is being read, and how far its end has been looked for.
    qsizetype m_headStart = 0;
    qsizetype m_searched = 0;
};

} // namespace zofra
