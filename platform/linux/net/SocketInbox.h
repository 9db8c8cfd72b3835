// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/RadioMetadataSocket.h"

#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>
#include <variant>

namespace zofra {

/// The bytes that a message takes here.
[[nodiscard]] inline std::size_t sizeOf(const SocketMessage& message) {
    return std::visit(
        [](const auto& held) { return static_cast<std::size_t>(held.size()) * sizeof held.front(); },
        message);
}

/// What a web socket has brought, until its owner asks for it, and why no more comes. One thread, but for
/// `silence` and `waitFor`.
class SocketInbox {
public:
    using Handler = RadioMetadataSocket::ReceiveHandler;

    SocketInbox(std::size_t mostMessages, std::size_t mostBytes)
        : m_mostMessages(mostMessages)
        , m_mostBytes(mostBytes) {}

    /// From now on nobody is told anything. Waits for one who is being told. Any thread, also from within
    /// what is called.
    void silence() {
        const std::scoped_lock lock(m_mutex);
        m_isSilenced = true;
    }
    /// Calls `call`, which tells the owner something, unless it is silenced.
    template<typename Call>
    void tell(const Call& call) {
        const std::scoped_lock lock(m_mutex);
        if (!m_isSilenced)
            call();
    }

    /// False when there is no room for it.
    [[nodiscard]] bool put(SocketMessage message) {
        const std::scoped_lock lock(m_mutex);
        const auto bytes = sizeOf(message);
        if (m_messages.size() >= m_mostMessages || m_bytes + bytes > m_mostBytes)
            return false;
        m_messages.push_back(std::move(message));
        m_bytes += bytes;
        deliver();
        return true;
    }
    /// After what is there comes this, to whoever asks. The first reason stays.
    void end(const QString& reason) {
        const std::scoped_lock lock(m_mutex);
        m_end = m_end.value_or(reason);
        deliver();
    }
    /// As `receive` when there is nothing to tell yet, else false. Any thread.
    [[nodiscard]] bool waitFor(const Handler& handler) {
        const std::scoped_lock lock(m_mutex);
        if (m_receiver || m_end || !m_messages.empty())
            return false;
        m_receiver = handler;
        return true;
    }
    /// Tells `handler` the next message, or why there is none, once.
    void receive(Handler handler) {
        const std::scoped_lock lock(m_mutex);
        if (m_receiver)
            return tell([&] { handler(failure(u"Another message is being waited for already."_qs)); });
        m_receiver = std::move(handler);
        deliver();
    }

private:
    void deliver() {
        if (!m_receiver || (m_messages.empty() && !m_end))
            return;
        const auto receiver = std::exchange(m_receiver, nullptr);
        if (m_messages.empty())
            return tell([&] { receiver(failure(*m_end)); });
        auto message = std::move(m_messages.front());
        m_messages.pop_front();
        m_bytes -= sizeOf(message);
        tell([&] { receiver(std::move(message)); });
    }

    const std::size_t m_mostMessages;
    const std::size_t m_mostBytes;
    std::deque<SocketMessage> m_messages;
    std::size_t m_bytes = 0;
    std::optional<QString> m_end;
    Handler m_receiver;
    /// Held while the owner is told; recursive, because it may ask for more or end the socket then.
    std::recursive_mutex m_mutex;
    bool m_isSilenced = false;
};

} // namespace zofra
