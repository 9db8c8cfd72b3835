// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/StreamSource.h"

#include <cstdint>
#include <map>
#include <new>

namespace zofra {

namespace {

/// Before an address's own scheme.
constexpr const char* mark = "zofra";

/// The streams that engines have open, under numbers that are never used again. An engine may cancel a stream
/// on one thread just after it has closed it on another: a number that is gone means nothing then, while an
/// address would be that of freed memory. Any thread.
class OpenStreams final {
public:
    /// Those of the whole program; they outlive every thread.
    static OpenStreams& all() {
        static auto* const streams = new OpenStreams;
        return *streams;
    }

    /// The number as an engine keeps it. Never null.
    void* add(std::shared_ptr<OpenStream> stream) {
        const std::scoped_lock lock(m_mutex);
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the engine keeps it in the place of an address
        auto* const number = reinterpret_cast<void*>(++m_last);
        m_streams.emplace(number, std::move(stream));
        return number;
    }

    /// Null once it is closed. Who holds it keeps it, closed or not.
    std::shared_ptr<OpenStream> find(void* number) {
        const std::scoped_lock lock(m_mutex);
        const auto found = m_streams.find(number);
        return found == m_streams.end() ? nullptr : found->second;
    }

    void remove(void* number) {
        // Ended after the lock is given back, for closing a connection may take a moment.
        decltype(m_streams)::node_type last;
        const std::scoped_lock lock(m_mutex);
        last = m_streams.extract(number);
    }

private:
    std::mutex m_mutex;
    std::map<void*, std::shared_ptr<OpenStream>> m_streams;
    std::uintptr_t m_last = 0;
};

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

const HttpStream::Settings& StreamSource::settings() {
    std::call_once(m_settingsOnce, [this] { m_settings = m_makeSettings(); });
    return m_settings;
}

void StreamSource::expect(const QUrl& url) {
    std::shared_ptr<OpenStream> former;
    {
        const std::scoped_lock lock(m_mutex);
        m_expected = url.toEncoded();
        former = std::exchange(m_prepared, nullptr);
    }
    if (former)
        former->cancel();
}

void StreamSource::prepare() {
    const auto& prepared = settings();
    QByteArray url;
    {
        const std::scoped_lock lock(m_mutex);
        url = m_expected;
    }
    if (url.isEmpty())
        return;
    // Not under the lock, for which the main thread never waits long.
    const auto stream = std::make_shared<OpenStream>(url, prepared);
    {
        const std::scoped_lock lock(m_mutex);
        if (m_expected != url)
            return;
        m_expected.clear();
        m_prepared = stream;
    }
    stream->prepare();
}

/// What was prepared if it is this; whatever else was prepared is over.
std::shared_ptr<OpenStream> StreamSource::takePrepared(const QByteArray& url) {
    std::shared_ptr<OpenStream> stream;
    {
        const std::scoped_lock lock(m_mutex);
        m_expected.clear();
        stream = std::exchange(m_prepared, nullptr);
    }
    if (!stream || stream->url() == url)
        return stream;
    stream->cancel();
    return nullptr;
}

/// Called on a thread of mpv's, like everything that it sets.
int StreamSource::open(void* self, char* address, mpv_stream_cb_info* info) {
    auto& source = *static_cast<StreamSource*>(self);
    const QByteArray url = QByteArray(address).remove(0, static_cast<qsizetype>(qstrlen(mark)));
    try {
        auto stream = source.takePrepared(url);
        info->cookie =
            OpenStreams::all().add(stream ? stream : std::make_shared<OpenStream>(url, source.settings()));
    } catch (const std::bad_alloc&) {
        return MPV_ERROR_LOADING_FAILED;
    }
    info->read_fn = [](void* cookie, char* buffer, std::uint64_t size) -> std::int64_t {
        const auto stream = OpenStreams::all().find(cookie);
        return stream ? stream->read(buffer, size) : -1;
    };
    info->close_fn = [](void* cookie) { OpenStreams::all().remove(cookie); };
    info->cancel_fn = [](void* cookie) {
        if (const auto stream = OpenStreams::all().find(cookie))
            stream->cancel();
    };
    return 0;
}

} // namespace zofra
