// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusItem.h"
#include "platform/linux/tray/TrayStatusItem.h"

#include <utility>

namespace zofra {

/// The status bar of a Linux desktop: makes items that find their panel by themselves.
class LinuxStatusBar final : public StatusBar {
public:
    explicit LinuxStatusBar(TrayStatusItem::Environment environment)
        : m_environment(std::move(environment)) {}
    /// Panels decide about lengths themselves.
    [[nodiscard]] std::unique_ptr<StatusItem> statusItem(double) override {
        return std::make_unique<TrayStatusItem>(m_environment);
    }

private:
    TrayStatusItem::Environment m_environment;
};

} // namespace zofra
