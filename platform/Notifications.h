// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace zofra {

/// Short messages of the desktop's own. Main thread only.
class Notifications {
public:
    virtual ~Notifications() = default;

    /// Shows a message in the place of the one before. Both are plain text; silent where nobody shows any.
    virtual void show(const QString& title, const QString& text) = 0;
};

} // namespace zofra
