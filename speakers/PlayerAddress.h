// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace zofra {

/// The address that `text` spells, if well-formed, with a host, and exactly "http" or "https" in lower case.
[[nodiscard]] std::optional<QUrl> playerAddress(const QString& text);

/// Whether the address that `text` spells has room for a user name or password, be it empty.
[[nodiscard]] bool carriesUserInfo(const QString& text);

/// The usual address of a player's description.
[[nodiscard]] QUrl usualDescriptionAddress(const QString& host);

} // namespace zofra
