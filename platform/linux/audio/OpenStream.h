// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/audio/FrameFilter.h"
#include "platform/linux/audio/ReadPacing.h"
#include "platform/linux/net/HttpStream.h"

#include <QByteArray>

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <stop_token>

namespace zofra {

/// One stream that the engine has open: whole frames of sound, read no faster than they can be of use. It is
/// over when much has come that is no sound.
class OpenStream final {
public:
    /// `url` is encoded. Connects with the first read.
    OpenStream(QByteArray url, const HttpStream::Settings& settings);

    /// Connects and reads up to the first frames, unless it is cancelled. Any thread.
    void prepare();
    /// As `HttpStream::read`. Waits while `prepare` is under way.
    [[nodiscard]] std::int64_t read(char* buffer, std::uint64_t size);
    /// Ends what waits, and every later read. Any thread.
    void cancel();

    [[nodiscard]] const QByteArray& url() const { return m_url; }

private:
    [[nodiscard]] bool readMore();
    [[nodiscard]] bool rest(ReadPacing::Clock::duration pause);

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
