// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QProcessEnvironment>

namespace zofra {

/// Variables that libraries in this program read, and that no program that it starts may inherit: to those
/// they would say that they are this one.
class OwnEnvironment {
public:
    /// Before there are threads that may read it.
    static void set(const char* name, const QByteArray& value);
    /// The environment as it was found. Main thread only.
    [[nodiscard]] static QProcessEnvironment forOthers();
};

} // namespace zofra
