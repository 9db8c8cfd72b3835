// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Result.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace zofra {

/// Reading of endpoints files: sections, `key = value` lines, comments. Stricter than a general INI reader,
/// because a typing mistake that went unnoticed would send the listener to the wrong server. Pure functions.
namespace endpoints {

struct Entry {
    enum class Kind { sectionHeader, value };
    Kind kind = Kind::value;
    QString section;
    /// Empty, like `value`, in a section's header.
    QString key;
    QString value;
    int line = 0;
};

/// What is wrong and where; `key` and `value` are empty where the line has none.
struct Mistake {
    int line = 0;
    QString key{};
    QString value{};
    QString reason{};
};

/// Larger files are refused: the complete table needs less than 2 kB.
inline constexpr int maxFileBytes = 64 * 1024;

/// Every entry in the order of the file, or the first mistake of form. Lines end in LF or CRLF; a byte order
/// mark is skipped; a comment is a line that starts with `;` or `#`, or what follows a blank and `;` or `#`.
[[nodiscard]] Result<std::vector<Entry>, Mistake> parse(const QByteArray& bytes);

/// Why `value` is neither `host` nor `host:port`; nothing when it is.
[[nodiscard]] std::optional<QString> mistakeInHost(const QString& value);

} // namespace endpoints
} // namespace zofra
