// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/LinuxStatusBar.h"

#include <utility>

namespace zofra {

LinuxStatusBar::LinuxStatusBar(TrayStatusItem::Environment environment)
    : m_environment(std::move(environment)) {}

std::unique_ptr<StatusItem> LinuxStatusBar::statusItem(double length) {
    // Panels decide about lengths themselves.
    Q_UNUSED(length)
    return std::make_unique<TrayStatusItem>(m_environment);
}

} // namespace zofra
