// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <optional>

namespace zofra {

// The bytes of a web socket's client side, RFC 6455. Pure code without a socket.

enum class WebSocketOpcode : std::uint8_t { continuation = 0, text = 1, binary = 2, close = 8, ping, pong };

/// Something whole that the peer has sent.
struct WebSocketEvent {
    enum class Kind {
        text,
        binary,
        ping,
        pong,
        close,
        /// A frame that completes nothing: one part of a message in several.
        part,
        /// The peer broke the rules; nothing more is read. `closeCode` and `text` say which.
        violation,
    };
    Kind kind = Kind::part;
    /// Of a text, close or violation.
    QString text;
    /// Of a binary message, ping or pong.
    QByteArray bytes;
    /// Of a close (1005 when the peer gave none) or violation.
    std::uint16_t closeCode = 0;
};

/// Reads what a server sends, in pieces of any size. What it keeps is bounded by the message cap, whatever
/// lengths the peer declares.
class WebSocketReader {
public:
    explicit WebSocketReader(std::size_t maxMessageBytes)
        : m_maxMessageBytes(maxMessageBytes) {}

    /// Takes bytes off the front of `input` until something is whole; absent when the input ran out before.
    /// After a close or violation the rest is swallowed.
    [[nodiscard]] std::optional<WebSocketEvent> next(QByteArrayView& input);

private:
    using Opcode = WebSocketOpcode;

    [[nodiscard]] bool readHeader(QByteArrayView& input);
    [[nodiscard]] qsizetype headerSize() const;
    [[nodiscard]] std::optional<WebSocketEvent> checkHeader();
    [[nodiscard]] std::optional<WebSocketEvent> checkDataFrame();
    [[nodiscard]] WebSocketEvent endFrame();
    [[nodiscard]] WebSocketEvent endMessage();
    [[nodiscard]] WebSocketEvent endClose();
    [[nodiscard]] WebSocketEvent violation(std::uint16_t closeCode, const QString& text);

    [[nodiscard]] std::uint8_t headerByte(qsizetype index) const {
        return static_cast<std::uint8_t>(m_header[index]);
    }
    [[nodiscard]] Opcode opcode() const { return static_cast<Opcode>(headerByte(0) & 0x0fU); }
    [[nodiscard]] bool isFinal() const { return (headerByte(0) & 0x80U) != 0; }
    [[nodiscard]] bool isControl() const { return (headerByte(0) & 0x08U) != 0; }

    const std::size_t m_maxMessageBytes;
    QByteArray m_header;
    bool m_headerIsWhole = false;
    /// Of the frame being read.
    std::uint64_t m_left = 0;
    QByteArray m_control;
    /// The message being put together, and how it began.
    QByteArray m_message;
    std::optional<Opcode> m_messageOpcode;
    bool m_hasEnded = false;
};

/// One final frame, masked with `mask` as everything is that a client sends.
[[nodiscard]] QByteArray webSocketFrame(WebSocketOpcode opcode, QByteArrayView payload, std::uint32_t mask);

/// The payload of a close frame; of the reason no more than fits.
[[nodiscard]] QByteArray webSocketClosePayload(std::uint16_t closeCode, const QByteArray& reason);

} // namespace zofra
