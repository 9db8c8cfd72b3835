// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace zofra {

/// Keeps a computer that nobody touches from going to sleep. Main thread only.
class IdleInhibitor {
public:
    virtual ~IdleInhibitor() = default;

    /// Cheap; may be called often.
    virtual void setInhibited(bool isInhibited) = 0;
};

} // namespace zofra
