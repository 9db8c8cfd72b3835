// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

namespace zofra {

/// A small file that the program keeps for itself. Main thread only.
class OwnFile {
public:
    virtual ~OwnFile() = default;

    /// Empty when there is none, or none that can be read.
    [[nodiscard]] virtual QByteArray read() = 0;
    /// Replaces what it holds, later and as a whole. A failure is reported by the implementation.
    virtual void write(const QByteArray& content) = 0;
};

} // namespace zofra
