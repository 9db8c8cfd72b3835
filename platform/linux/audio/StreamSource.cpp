// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/StreamSource.h"

#include "platform/linux/audio/FrameStart.h"

#include <algorithm>
#include <array>
#include <new>

namespace zofra {

namespace {

/// Before an address's own scheme.
constexpr const char* mark = "zofra";

/// One stream that is open, from its first whole frame on.
class OpenStream {
public:
    OpenStream(const QByteArray& url, const HttpStream::Settings& settings)
        : m_stream(url, settings) {}

    std::int64_t read(char* buffer, std::uint64_t size) {
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
    void cancel() { m_stream.cancel(); }

private:
    /// False when the stream broke before there was anything to play.
    bool findBeginning() {
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

    HttpStream m_stream;
    QByteArray m_beginning;
    bool m_hasBegun = false;
};

OpenStream* streamOf(void* cookie) {
    return static_cast<OpenStream*>(cookie);
}

} // namespace

int StreamSource::serve(mpv_handle* handle, decltype(&::mpv_stream_cb_add_ro) addProtocol) {
    for (const char* scheme : {"https", "http"}) {
        const QByteArray protocol = QByteArray(mark) + scheme;
        if (const int result = addProtocol(handle, protocol.constData(), this, &StreamSource::open);
            result < 0)
            return result;
    }
    return 0;
}

QByteArray StreamSource::address(const QUrl& url) {
    return mark + url.toEncoded();
}

/// Called on a thread of mpv's, like everything that it sets.
int StreamSource::open(void* self, char* address, mpv_stream_cb_info* info) {
    const QByteArray url = QByteArray(address).remove(0, static_cast<qsizetype>(qstrlen(mark)));
    // Connects with the first read, which can be cancelled.
    auto* stream = new (std::nothrow) OpenStream(url, static_cast<StreamSource*>(self)->m_settings);
    if (!stream)
        return MPV_ERROR_LOADING_FAILED;
    info->cookie = stream;
    info->read_fn = [](void* cookie, char* buffer, std::uint64_t size) {
        return streamOf(cookie)->read(buffer, size);
    };
    info->close_fn = [](void* cookie) { delete streamOf(cookie); };
    info->cancel_fn = [](void* cookie) { streamOf(cookie)->cancel(); };
    return 0;
}

} // namespace zofra
