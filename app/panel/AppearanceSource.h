// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelTheme.h"
#include "platform/Observable.h"

#include <functional>

namespace zofra {

/// The desktop's appearance as last heard. Main thread only.
class AppearanceSource {
public:
    [[nodiscard]] const DesktopAppearance& current() const { return m_current; }
    /// Keeps `appearance` and, when it differs, tells the observers.
    void set(const DesktopAppearance& appearance) {
        if (appearance == m_current)
            return;
        m_current = appearance;
        m_changed.notify();
    }
    [[nodiscard]] ObservationToken observeChanged(std::function<void()> handler) {
        return m_changed.add(std::move(handler));
    }

private:
    DesktopAppearance m_current;
    ObserverList<> m_changed;
};

} // namespace zofra
