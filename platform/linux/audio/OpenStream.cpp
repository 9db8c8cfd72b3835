// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/OpenStream.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zofra {

namespace {

constexpr std::size_t readSize = 16'384;
/// A tag with a picture before the sound is far below.
constexpr qsizetype mostWithoutSound = 1'048'576;

} // namespace

OpenStream::OpenStream(QByteArray url, const HttpStream::Settings& settings)
    : m_url(std::move(url))
    , m_stream(m_url, settings) {}

void OpenStream::prepare() {
    const std::scoped_lock lock(m_mutex);
    while (m_frames.isEmpty() && readMore()) {
    }
}

std::int64_t OpenStream::read(char* buffer, std::uint64_t size) {
    const std::scoped_lock lock(m_mutex);
    while (m_frames.isEmpty()) {
        if (!readMore())
            return *m_end;
    }
    return m_frames.take(buffer, static_cast<qsizetype>(std::min<std::uint64_t>(size, readSize)));
}

void OpenStream::cancel() {
    m_stop.request_stop();
    m_stream.cancel();
}

bool OpenStream::readMore() {
    if (m_end)
        return false;
    std::array<char, readSize> buffer{};
    std::int64_t count = -1;
    if (m_frames.bytesWithoutSound() < mostWithoutSound &&
        rest(m_pacing.pauseBefore(ReadPacing::Clock::now()))) {
        const auto began = ReadPacing::Clock::now();
        count = m_stream.read(buffer.data(), buffer.size());
        m_frames.put(QByteArrayView(buffer.data(), static_cast<qsizetype>(std::max<std::int64_t>(count, 0))));
        m_pacing.hasRead(began, ReadPacing::Clock::now(), static_cast<qsizetype>(count), m_frames.sound());
    }
    if (count > 0)
        return true;
    m_end = count;
    return false;
}

/// False when it was cancelled meanwhile.
bool OpenStream::rest(ReadPacing::Clock::duration pause) {
    std::mutex mutex;
    std::unique_lock lock(mutex);
    m_woken.wait_for(lock, m_stop.get_token(), pause, [] { return false; });
    return !m_stop.stop_requested();
}

} // namespace zofra
