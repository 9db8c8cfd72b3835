// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/StreamSource.h"

#include "platform/linux/audio/OpenStreams.h"

#include <memory>
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

/// Called on a thread of mpv's, like everything that it sets.
int StreamSource::open(void* self, char* address, mpv_stream_cb_info* info) {
    const QByteArray url = QByteArray(address).remove(0, static_cast<qsizetype>(qstrlen(mark)));
    try {
        info->cookie = OpenStreams::all().add(
            std::make_shared<OpenStream>(url, static_cast<StreamSource*>(self)->m_settings));
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
