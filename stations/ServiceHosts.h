// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Result.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace zofra {

/// The hosts of every service (`host` or `host:port`): a built-in table, overridden by files. A plain value.
class ServiceHosts {
public:
    /// The built-in table.
    ServiceHosts();

    enum class StreamKind { aac, mp3 };
    /// `stationRawValue` must be one of the catalogue.
    [[nodiscard]] QString streamHost(const QString& stationRawValue, StreamKind kind) const;
    [[nodiscard]] QString liveSocketHost() const { return m_values.value(u"metadata/live_socket"_qs); }
    [[nodiscard]] QString onAirHost() const { return m_values.value(u"metadata/on_air"_qs); }
    [[nodiscard]] QString scraperHost() const { return m_values.value(u"metadata/scraper"_qs); }
    /// A file of authorities trusted in addition to the system's, if one was named.
    [[nodiscard]] std::optional<QString> extraAuthorityFile() const;

    /// Of its files, in the folders of configuration.
    static inline const QString fileName = u"zofrazofra/endpoints.ini"_qs;
    enum class MissingFile { isFine, isRefused };
    /// Lays the values of `path` over this table. Where the file is wrong, the error is one line, "file:line:
    /// key = value: reason", and the table is unchanged.
    [[nodiscard]] Result<void> overlay(const QString& path, MissingFile missing);
    /// The built-in ones, then each of `layers` that exists, weakest first, then `commandLineFile`.
    [[nodiscard]] static Result<ServiceHosts> load(const QStringList& layers,
                                                   const std::optional<QString>& commandLineFile);

private:
    QHash<QString, QString> m_values;
};

/// The address of a service; absent when `host` (`host` or `host:port`) makes none. A pure function.
[[nodiscard]] std::optional<QUrl> serviceUrl(const QString& scheme, const QString& host,
                                             const QString& pathAndQuery);

} // namespace zofra
