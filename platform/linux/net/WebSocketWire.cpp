// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/WebSocketWire.h"

#include <QDataStream>
#include <QIODevice>
#include <QStringDecoder>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <utility>

namespace zofra {

namespace {

constexpr std::uint16_t protocolError = 1002;
constexpr std::uint16_t noCodeGiven = 1005;
constexpr std::uint16_t invalidPayload = 1007;
constexpr std::uint16_t messageTooBig = 1009;
constexpr std::uint64_t maxControlBytes = 125;

/// Codes that may stand in a close frame: those registered, and those for libraries and applications.
bool mayBeSent(std::uint16_t closeCode) {
    const bool isRegistered = closeCode >= 1000 && closeCode <= 1014;
    const bool isReserved = closeCode >= 1004 && closeCode <= 1006;
    return (isRegistered && !isReserved) || (closeCode >= 3000 && closeCode < 5000);
}

std::optional<QString> strictUtf8(QByteArrayView bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder.decode(bytes);
    return decoder.hasError() ? std::nullopt : std::optional(text);
}

} // namespace

std::optional<WebSocketEvent> WebSocketReader::next(QByteArrayView& input) {
    while (!m_hasEnded) {
        if (!m_headerIsWhole) {
            if (!readHeader(input))
                return std::nullopt;
            if (auto broken = checkHeader())
                return broken;
        }
        const auto taken =
            static_cast<qsizetype>(std::min<std::uint64_t>(m_left, static_cast<std::uint64_t>(input.size())));
        (isControl() ? m_control : m_message).append(input.first(taken));
        input = input.sliced(taken);
        m_left -= static_cast<std::uint64_t>(taken);
        if (m_left > 0)
            return std::nullopt;
        m_headerIsWhole = false;
        auto event = endFrame();
        m_header.clear();
        return event;
    }
    input = {};
    return std::nullopt;
}

/// The two first bytes tell how long the header is.
qsizetype WebSocketReader::headerSize() const {
    if (m_header.size() < 2)
        return 2;
    const auto length = headerByte(1) & 0x7fU;
    return length == 127 ? 10 : length == 126 ? 4 : 2;
}

bool WebSocketReader::readHeader(QByteArrayView& input) {
    while (m_header.size() < headerSize()) {
        if (input.isEmpty())
            return false;
        const auto taken = std::min(headerSize() - m_header.size(), input.size());
        m_header.append(input.first(taken));
        input = input.sliced(taken);
    }
    m_headerIsWhole = true;
    m_left = headerByte(1) & 0x7fU;
    if (m_header.size() == 4)
        m_left = qFromBigEndian<quint16>(m_header.constData() + 2);
    else if (m_header.size() == 10)
        m_left = qFromBigEndian<quint64>(m_header.constData() + 2);
    return true;
}

std::optional<WebSocketEvent> WebSocketReader::checkHeader() {
    if ((headerByte(0) & 0x70U) != 0)
        return violation(protocolError, u"reserved bits are set"_qs);
    if ((headerByte(1) & 0x80U) != 0)
        return violation(protocolError, u"a frame of the server is masked"_qs);
    // The shortest form is the only one, and the top bit of the longest is no part of the number.
    if ((m_header.size() == 4 && m_left < 126) ||
        (m_header.size() == 10 && (m_left <= 0xffff || m_left >> 63 != 0)))
        return violation(protocolError, u"a length is malformed"_qs);
    switch (opcode()) {
    case Opcode::continuation:
    case Opcode::text:
    case Opcode::binary:
        return checkDataFrame();
    case Opcode::close:
    case Opcode::ping:
    case Opcode::pong:
        if (!isFinal() || m_left > maxControlBytes)
            return violation(protocolError, u"a control frame is too long or in parts"_qs);
        return std::nullopt;
    }
    return violation(protocolError, u"a frame is of an unknown kind"_qs);
}

std::optional<WebSocketEvent> WebSocketReader::checkDataFrame() {
    const bool continues = opcode() == Opcode::continuation;
    if (continues != m_messageOpcode.has_value())
        return violation(protocolError, u"the parts of a message do not fit together"_qs);
    if (!continues)
        m_messageOpcode = opcode();
    if (m_left > m_maxMessageBytes - static_cast<std::size_t>(m_message.size()))
        return violation(messageTooBig, u"a message is too long"_qs);
    return std::nullopt;
}

WebSocketEvent WebSocketReader::endFrame() {
    switch (opcode()) {
    case Opcode::ping:
        return {WebSocketEvent::Kind::ping, {}, std::exchange(m_control, {})};
    case Opcode::pong:
        return {WebSocketEvent::Kind::pong, {}, std::exchange(m_control, {})};
    case Opcode::close:
        return endClose();
    default:
        return isFinal() ? endMessage() : WebSocketEvent{};
    }
}

WebSocketEvent WebSocketReader::endMessage() {
    const auto began = m_messageOpcode;
    m_messageOpcode.reset();
    auto bytes = std::exchange(m_message, {});
    if (began == Opcode::binary)
        return {WebSocketEvent::Kind::binary, {}, std::move(bytes)};
    auto text = strictUtf8(bytes);
    if (!text)
        return violation(invalidPayload, u"a text is not valid UTF-8"_qs);
    return {WebSocketEvent::Kind::text, *std::move(text), {}};
}

WebSocketEvent WebSocketReader::endClose() {
    m_hasEnded = true;
    const auto payload = std::exchange(m_control, {});
    if (payload.isEmpty())
        return {WebSocketEvent::Kind::close, {}, {}, noCodeGiven};
    const auto closeCode = payload.size() >= 2 ? qFromBigEndian<quint16>(payload.constData()) : quint16{0};
    if (!mayBeSent(closeCode))
        return violation(protocolError, u"a close frame is malformed"_qs);
    const auto reason = strictUtf8(QByteArrayView(payload).sliced(2));
    if (!reason)
        return violation(invalidPayload, u"the reason of a close is not valid UTF-8"_qs);
    return {WebSocketEvent::Kind::close, *reason, {}, closeCode};
}

WebSocketEvent WebSocketReader::violation(std::uint16_t closeCode, const QString& text) {
    m_hasEnded = true;
    m_message = {};
    m_control = {};
    return {WebSocketEvent::Kind::violation, text, {}, closeCode};
}

QByteArray webSocketFrame(WebSocketOpcode opcode, QByteArrayView payload, std::uint32_t mask) {
    constexpr quint8 final = 0x80;
    constexpr quint8 masked = 0x80;
    QByteArray frame;
    QDataStream out(&frame, QIODevice::WriteOnly);
    out << static_cast<quint8>(final | static_cast<quint8>(opcode));
    if (payload.size() < 126)
        out << static_cast<quint8>(masked | static_cast<quint8>(payload.size()));
    else if (payload.size() <= 0xffff)
        out << static_cast<quint8>(masked | 126U) << static_cast<quint16>(payload.size());
    else
        out << static_cast<quint8>(masked | 127U) << static_cast<quint64>(payload.size());
    out << mask;
    std::array<char, 4> key{};
    qToBigEndian(mask, key.data());
    for (qsizetype i = 0; i < payload.size(); ++i)
        frame.append(static_cast<char>(payload[i] ^ key[static_cast<std::size_t>(i % 4)]));
    return frame;
}

QByteArray webSocketClosePayload(std::uint16_t closeCode, const QByteArray& reason) {
    std::array<char, 2> code{};
    qToBigEndian(closeCode, code.data());
    return QByteArray(code.data(), code.size()) + reason.left(maxControlBytes - code.size());
}

} // namespace zofra
