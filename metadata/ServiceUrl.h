// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace zofra {

/// The address made of a scheme, a configured `host` or `host:port`, and a path with its query; absent when
/// the host does not make one. A pure function.
[[nodiscard]] inline std::optional<QUrl> serviceUrl(const QString& scheme, const QString& host,
                                                    const QString& pathAndQuery) {
    const QUrl url(scheme + QStringLiteral("://") + host + pathAndQuery, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        return std::nullopt;
    return url;
}

} // namespace zofra
