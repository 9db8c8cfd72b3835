// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/IniDocument.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <chrono>
#include <variant>

namespace zofra {

/// Reading and replacing a settings file. Callable from any thread.
namespace inifile {

/// Why a file could not be read or written: "No space left on device".
struct Problem {
    QString reason;
};

/// A larger file is none of ours.
inline constexpr qint64 maxFileBytes = 16'777'216;
/// Copies of damaged files beside one settings file; with more than these something is wrong that further
/// ones would not help.
inline constexpr int maxDamagedCopies = 9;

/// What the file holds; an empty document when there is none.
[[nodiscard]] std::variant<IniDocument, Problem> read(const QString& path);

/// What a file holds once values have been written to it.
struct Merged {
    IniDocument document;
    /// Where the file as it was has been kept, because it was damaged; empty when it was not.
    QString keptAs;
};

/// Under a lock that every program using this function respects: reads the file, sets `values` in it and
/// replaces it in one step, with the mode it had. A link is followed. Of a damaged file a copy is kept beside
/// it first; where that cannot be made, nothing is written.
[[nodiscard]] std::variant<Merged, Problem>
merge(const QString& path, const QHash<QByteArray, QByteArray>& values, std::chrono::milliseconds lockWait);

} // namespace inifile
} // namespace zofra
