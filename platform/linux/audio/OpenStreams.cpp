// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/OpenStreams.h"

#include <utility>

namespace zofra {

OpenStreams& OpenStreams::all() {
    static auto* const streams = new OpenStreams;
    return *streams;
}

void* OpenStreams::add(std::shared_ptr<OpenStream> stream) {
    const std::scoped_lock lock(m_mutex);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the engine keeps it in the place of an address
    auto* const number = reinterpret_cast<void*>(++m_last);
    m_streams.emplace(number, std::move(stream));
    return number;
}

std::shared_ptr<OpenStream> OpenStreams::find(void* number) const {
    const std::scoped_lock lock(m_mutex);
    const auto found = m_streams.find(number);
    return found == m_streams.end() ? nullptr : found->second;
}

void OpenStreams::remove(void* number) {
    std::shared_ptr<OpenStream> last;
    const std::scoped_lock lock(m_mutex);
    if (const auto found = m_streams.find(number); found != m_streams.end()) {
        // Ended after the lock is given back, for closing a connection may take a moment.
        last = std::move(found->second);
        m_streams.erase(found);
    }
}

} // namespace zofra
