// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/StreamSource.h"

#include "platform/linux/audio/OpenStreams.h"

#include <new>

namespace zofra {

namespace {

/// Before an address's own scheme.
constexpr const char* mark = "zofra";

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
