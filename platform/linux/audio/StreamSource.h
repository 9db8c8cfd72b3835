// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/audio/OpenStream.h"
#include "platform/linux/net/HttpStream.h"

#include <QByteArray>
#include <QUrl>

#include <functional>
#include <memory>
#include <mpv/stream_cb.h>
#include <mutex>
#include <utility>

namespace zofra {

/// Feeds mpv with streams that we fetch ourselves: the engine's own library would follow a redirect from a
/// secure address to an insecure one, and cannot be told not to.
class StreamSource {
public:
    /// `makeSettings` is called once, on a background thread.
    explicit StreamSource(std::function<HttpStream::Settings()> makeSettings)
        : m_makeSettings(std::move(makeSettings)) {}

    /// Makes `handle` come here for the addresses that `address` gives. Must outlive the handle. Returns
    /// mpv's error code, 0 for none.
    [[nodiscard]] int serve(mpv_handle* handle, decltype(&::mpv_stream_cb_add_ro) addProtocol);
    /// What mpv is to be asked to open for this stream.
    [[nodiscard]] static QByteArray address(const QUrl& url);

    /// Takes the time that preparing TLS does, once. A background thread.
    const HttpStream::Settings& settings();

    /// An mpv will open `url` in a moment, or nothing when it is empty. What was prepared before is over. Any
    /// thread.
    void expect(const QUrl& url);
    /// Connects to what is expected and waits for its first frames, so that the connection and the mpv that
    /// is being made need not wait for each other. A background thread.
    void prepare();

private:
    static int open(void* self, char* address, mpv_stream_cb_info* info);
    [[nodiscard]] std::shared_ptr<OpenStream> takePrepared(const QByteArray& url);

    std::function<HttpStream::Settings()> m_makeSettings;
    std::once_flag m_settingsOnce;
    HttpStream::Settings m_settings;
    std::mutex m_mutex;
    QByteArray m_expected;
    std::shared_ptr<OpenStream> m_prepared;
};

} // namespace zofra
