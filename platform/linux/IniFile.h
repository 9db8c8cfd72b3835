// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/IniDocument.h"
#include "platform/Result.h"

#include <QMap>

#include <chrono>

namespace zofra {

/// Reading and replacing a settings file. An error says why: "No space left on device". Callable from any
/// thread.
namespace inifile {

/// A larger file is none of ours.
inline constexpr qint64 maxFileBytes = 67'108'864;
/// Copies of damaged files beside one settings file; with more than these something is wrong that further
/// ones would not help.
inline constexpr int maxDamagedCopies = 9;

/// What the file holds; an empty document when there is none.
[[nodiscard]] Result<IniDocument> read(const QString& path);

/// What a file holds once values have been written to it.
struct Merged {
    IniDocument document;
    /// Where the file as it was has been kept, because it was damaged; empty when it was not.
    QString keptAs;
};

/// Under a lock that every program using this function respects: reads the file, sets `values` in it and
/// replaces it in one step, with the permissions it had. A file that says all this already is left alone. A
/// link is followed. Of a damaged file a copy is kept beside it first; where that cannot be made, nothing is
/// written.
[[nodiscard]] Result<Merged> merge(const QString& path, const QMap<QByteArray, QByteArray>& values,
                                   std::chrono::milliseconds lockWait);

} // namespace inifile
} // namespace zofra
