// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/audio/FrameFilter.h"
#include "platform/linux/audio/ReadPacing.h"
#include "platform/linux/net/HttpStream.h"

#include <QByteArray>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <stop_token>
#include <utility>

namespace zofra {

/// One stream that the engine has open: whole frames of sound, read no faster than they can be of use. It is
/// over when much has come that is no sound.
class OpenStream final {
public:
    /// `url` is encoded. Connects with the first read.
    OpenStream(QByteArray url, const HttpStream::Settings& settings)
        : m_url(std::move(url))
        , m_stream(m_url, settings) {}

    /// Connects and reads up to the first frames, unless it is cancelled. Any thread.
    void prepare() {
        const std::scoped_lock lock(m_mutex);
        while (m_frames.isEmpty() && readMore()) {
        }
    }
    /// As `HttpStream::read`. Waits while `prepare` is under way.
    [[nodiscard]] std::int64_t read(char* buffer, std::uint64_t size) {
        const std::scoped_lock lock(m_mutex);
        while (m_frames.isEmpty()) {
            if (!readMore())
                return *m_end;
        }
        return m_frames.take(buffer, static_cast<qsizetype>(std::min<std::uint64_t>(size, readSize)));
    }
    /// Ends what waits, and every later read. Any thread.
    void cancel() {
        m_stop.request_stop();
        m_stream.cancel();
    }

    [[nodiscard]] const QByteArray& url() const { return m_url; }

private:
    static constexpr std::size_t readSize = 16'384;
    /// A tag with a picture before the sound is far below.
    static constexpr qsizetype mostWithoutSound = 1'048'576;

    bool readMore() {
        if (m_end)
            return false;
        std::array<char, readSize> buffer{};
        std::int64_t count = -1;
        if (m_frames.bytesWithoutSound() < mostWithoutSound &&
            rest(m_pacing.pauseBefore(ReadPacing::Clock::now()))) {
            const auto began = ReadPacing::Clock::now();
            count = m_stream.read(buffer.data(), buffer.size());
            m_frames.put({buffer.data(), static_cast<qsizetype>(std::max<std::int64_t>(count, 0))});
            m_pacing.hasRead(began, ReadPacing::Clock::now(), static_cast<qsizetype>(count),
                             m_frames.sound());
        }
        if (count > 0)
            return true;
        m_end = count;
        return false;
    }
    /// False when it was cancelled meanwhile.
    bool rest(ReadPacing::Clock::duration pause) {
        std::mutex mutex;
        std::unique_lock lock(mutex);
        m_woken.wait_for(lock, m_stop.get_token(), pause, [] { return false; });
        return !m_stop.stop_requested();
    }

    const QByteArray m_url;
    HttpStream m_stream;
    std::stop_source m_stop;

    /// Held by whoever reads.
    std::mutex m_mutex;
    std::condition_variable_any m_woken;
    FrameFilter m_frames;
    ReadPacing m_pacing{ReadPacing::Clock::now()};
    /// What every read answers from now on.
    std::optional<std::int64_t> m_end;
};

} // namespace zofra
