// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Result.h"

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

    /// Of its files, in the folders of configuration.
    static inline const QString fileName = QStringLiteral("zofrazofra/endpoints.ini");
    enum class MissingFile { isFine, isRefused };
    /// Lays the values of `path` over this table. Where the file is wrong, the error is one line, "file:line:
    /// key = value: reason", and the table is unchanged.
    [[nodiscard]] Result<void> overlay(const QString& path, MissingFile missing);
    /// The hosts to use: built-in, then each of `layers` that exists, weakest first, then `commandLineFile`,
    /// which must exist.
    [[nodiscard]] static Result<ServiceHosts> load(const QStringList& layers,
                                                   const std::optional<QString>& commandLineFile);

private:
    QHash<QString, QString> m_values;
};

} // namespace zofra
