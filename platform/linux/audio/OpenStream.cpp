// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/OpenStream.h"

#include "platform/linux/audio/FrameStart.h"

#include <algorithm>
#include <array>

namespace zofra {

std::int64_t OpenStream::read(char* buffer, std::uint64_t size) {
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(size, frameSearchBytes));
    if (!m_hasBegun && !findBeginning())
        return -1;
    if (m_beginning.isEmpty())
        return m_stream.read(buffer, wanted);
    const auto count = std::min(m_beginning.size(), static_cast<qsizetype>(wanted));
    std::copy_n(m_beginning.constData(), count, buffer);
    m_beginning.remove(0, count);
    return count;
}

bool OpenStream::findBeginning() {
    std::array<char, 4096> buffer{};
    auto start = frameStart(m_beginning);
    while (!start) {
        const auto count = m_stream.read(buffer.data(), buffer.size());
        if (count < 0)
            return false;
        m_beginning.append(buffer.data(), static_cast<qsizetype>(count));
        start = count == 0 ? 0 : frameStart(m_beginning);
    }
    m_beginning.remove(0, *start);
    m_hasBegun = true;
    return true;
}

} // namespace zofra
