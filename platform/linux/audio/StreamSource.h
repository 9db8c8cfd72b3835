// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/net/HttpStream.h"

#include <QByteArray>
#include <QUrl>

#include <mpv/stream_cb.h>
#include <utility>

namespace zofra {

/// Feeds mpv with streams that we fetch ourselves: the engine's own library would follow a redirect from a
/// secure address to an insecure one, and cannot be told not to.
class StreamSource {
public:
    explicit StreamSource(HttpStream::Settings settings)
        : m_settings(std::move(settings)) {}

    /// Makes `handle` come here for the addresses that `address` gives. Must outlive the handle. Returns
    /// mpv's error code, 0 for none.
    [[nodiscard]] int serve(mpv_handle* handle, decltype(&::mpv_stream_cb_add_ro) addProtocol);
    /// What mpv is to be asked to open for this stream.
    [[nodiscard]] static QByteArray address(const QUrl& url);

private:
    static int open(void* self, char* address, mpv_stream_cb_info* info);

    const HttpStream::Settings m_settings;
};

} // namespace zofra
