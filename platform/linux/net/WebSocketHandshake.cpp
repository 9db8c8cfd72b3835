// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/WebSocketHandshake.h"

#include <QCryptographicHash>
#include <QList>
#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace zofra {

namespace {

constexpr qsizetype maxAnswerBytes = 16'384;

/// The values of every header `name`, joined with commas as if they stood in one line; absent when there is
/// none.
std::optional<QByteArray> headerValue(const QList<QByteArray>& lines, const QByteArray& name) {
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

bool hasToken(const std::optional<QByteArray>& value, const QByteArray& token) {
    if (!value)
        return false;
    const auto tokens = value->split(',');
    return std::ranges::any_of(tokens, [&token](const QByteArray& one) {
        return one.trimmed().compare(token, Qt::CaseInsensitive) == 0;
    });
}

QByteArray hostHeader(QUrl url) {
    url.setUserInfo({});
    return url.authority(QUrl::FullyEncoded).toLatin1();
}

QByteArray target(const QUrl& url) {
    auto path = url.path(QUrl::FullyEncoded).toLatin1();
    if (path.isEmpty())
        path = "/";
    return url.hasQuery() ? path + '?' + url.query(QUrl::FullyEncoded).toLatin1() : path;
}

/// The three digits of a status line; empty when it is none.
QByteArray statusOf(const QByteArray& head) {
    static const QRegularExpression line(uR"(^HTTP/1\.1 (\d{3})(?:[ \r\n]|$))"_qs);
    return line.match(QString::fromLatin1(head)).captured(1).toLatin1();
}

/// An answer that only announces another one.
bool isInterim(const QByteArray& status) {
    return status.startsWith('1') && status != "101";
}

} // namespace

WebSocketHandshake::WebSocketHandshake(QUrl url, const QByteArray& nonce)
    : m_url(std::move(url))
    , m_key(nonce.toBase64()) {}

QByteArray WebSocketHandshake::request() const {
    return "GET " + target(m_url) + " HTTP/1.1\r\nHost: " + hostHeader(m_url) +
           "\r\nUpgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Key: " + m_key +
           "\r\nSec-WebSocket-Version: 13\r\nUser-Agent: Mozilla/5.0\r\n\r\n";
}

QByteArray WebSocketHandshake::acceptFor(const QByteArray& key) {
    return QCryptographicHash::hash(key + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11", QCryptographicHash::Sha1)
        .toBase64();
}

std::optional<Result<QByteArray>> WebSocketHandshake::receive(const QByteArray& bytes) {
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
        if (isInterim(statusOf(head)))
            continue;
        return check(head).map([this] { return m_received.sliced(m_headStart); });
    }
}

Result<void> WebSocketHandshake::check(const QByteArray& head) const {
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

} // namespace zofra
