// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QUrl>

namespace zofra {

/// The desktop outside of this program. Main thread only.
class Workspace {
public:
    virtual ~Workspace() = default;
    /// Opens an address with whatever the desktop has for it. Where there is nothing for it, nothing happens.
    virtual void open(const QUrl& url) = 0;
};

} // namespace zofra
