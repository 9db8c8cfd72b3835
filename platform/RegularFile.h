// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Result.h"

#include <QByteArray>

#include <optional>

namespace zofra {

/// What the file at `path` holds, `maxBytes` of it at most; nothing when there is none. Only a regular file
/// is opened: a pipe, a device or a folder in its place would keep the reader waiting or have effects of its
/// own. Callable from any thread.
[[nodiscard]] Result<std::optional<QByteArray>> readRegularFile(const QString& path, qint64 maxBytes);

/// Whether `path` is a link, wherever it leads.
[[nodiscard]] bool isLink(const QString& path);

} // namespace zofra
