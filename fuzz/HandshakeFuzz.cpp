// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/FuzzBytes.h"
#include "fuzz/FuzzInput.h"
#include "platform/linux/net/WebSocketHandshake.h"

#include <algorithm>
#include <optional>

namespace {

using namespace zofra;

using Verdict = std::optional<Result<QByteArray>>;

WebSocketHandshake begun() {
    return {QUrl(QStringLiteral("wss://live.example/")), "the sample nonce"};
}

/// The verdict when the answer comes in pieces, and what came after the verdict with it.
Verdict verdictOn(const QByteArray& answer, qsizetype piece) {
    auto handshake = begun();
    for (qsizetype at = 0; at < answer.size(); at += piece) {
        if (auto verdict = handshake.receive(answer.mid(at, piece))) {
            if (*verdict)
                **verdict += answer.mid(std::min(at + piece, answer.size()));
            return verdict;
        }
    }
    return std::nullopt;
}

/// An answer that would be right, with what the input says in between.
QByteArray nearlyRight(fuzz::Input& input) {
    const auto key = begun().request().split('\n');
    QByteArray accept;
    for (const auto& line : key) {
        if (line.startsWith("Sec-WebSocket-Key: "))
            accept = WebSocketHandshake::acceptFor(line.mid(19).trimmed());
    }
    QByteArray answer =
        input.oneOf({"HTTP/1.1 101 Yes\r\n", "HTTP/1.1 101\r\n", "HTTP/1.0 101 Yes\r\n",
                     "HTTP/1.1 200 Ok\r\n", "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 101 Yes\r\n"});
    answer +=
        input.line() + input.oneOf({"Upgrade: websocket\r\n", "upgrade: WebSocket\r\n", "Upgrade: h2c\r\n"});
    answer +=
        input.line() + input.oneOf({"Connection: Upgrade\r\n", "Connection: keep-alive, upgrade\r\n", ""});
    answer += "Sec-WebSocket-Accept: " + accept + input.oneOf({"\r\n", " \r\n", "=\r\n"});
    answer += input.line() + "\r\n" + input.until("");
    return answer;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const bool isPlain = input.byte() % 2 == 0;
    const auto piece = qsizetype{1} + input.byte() % 64;
    const auto answer =
        isPlain ? fuzz::bytes(data, size).mid(std::min<qsizetype>(2, static_cast<qsizetype>(size)))
                : nearlyRight(input);
    const auto whole = verdictOn(answer, answer.size() + 1);
    const auto split = verdictOn(answer, piece);
    fuzz::require(whole.has_value() == split.has_value());
    if (!whole)
        return 0;
    fuzz::require(whole->has_value() == split->has_value());
    if (*whole) {
        fuzz::require(**whole == **split);
        fuzz::require(answer.endsWith(**whole) && answer.contains("101"));
    } else {
        const auto& reason = whole->error();
        fuzz::require(!reason.isEmpty() && !reason.contains(u'\n'));
    }
    return 0;
}
