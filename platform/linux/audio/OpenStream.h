// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/net/HttpStream.h"

#include <QByteArray>

#include <cstdint>

namespace zofra {

/// One stream that the engine has open, from its first whole frame on.
class OpenStream final {
public:
    /// `url` is encoded. Connects with the first `read`.
    OpenStream(const QByteArray& url, const HttpStream::Settings& settings)
        : m_stream(url, settings) {}

    /// As `HttpStream::read`. One thread at a time.
    [[nodiscard]] std::int64_t read(char* buffer, std::uint64_t size);
    /// As `HttpStream::cancel`. Any thread.
    void cancel() { m_stream.cancel(); }

private:
    /// False when the stream broke before there was anything to play.
    bool findBeginning();

    HttpStream m_stream;
    QByteArray m_beginning;
    bool m_hasBegun = false;
};

} // namespace zofra
