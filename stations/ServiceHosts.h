// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>

namespace zofra {

/// The hosts of every service: a built-in table, overridden key by key by files. A plain value; copies are
/// cheap. Every value is `host` or `host:port`.
class ServiceHosts {
public:
    /// The built-in table.
    ServiceHosts();

    enum class StreamKind { aac, mp3 };
    /// `stationRawValue` must be one of the catalogue.
    [[nodiscard]] QString streamHost(const QString& stationRawValue, StreamKind kind) const;
    [[nodiscard]] QString liveSocketHost() const;
    [[nodiscard]] QString onAirHost() const;
    [[nodiscard]] QString scraperHost() const;
    /// A file of authorities trusted in addition to the system's, if one was named.
    [[nodiscard]] std::optional<QString> extraAuthorityFile() const;

    /// What is wrong with a file, on one line: file, key, value, reason.
    using Refusal = std::optional<QString>;
    enum class MissingFile { isFine, isRefused };
    /// Lays the values of `path` over this table. On a refusal the table is unchanged.
    [[nodiscard]] Refusal overlay(const QString& path, MissingFile missing);

private:
    QHash<QString, QString> m_values;
};

} // namespace zofra
