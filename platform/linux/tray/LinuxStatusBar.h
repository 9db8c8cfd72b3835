// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusItem.h"
#include "platform/linux/tray/TrayStatusItem.h"

namespace zofra {

/// The status bar of a Linux desktop: makes items that find their panel by themselves.
class LinuxStatusBar final : public StatusBar {
public:
    explicit LinuxStatusBar(TrayStatusItem::Environment environment);
    [[nodiscard]] std::unique_ptr<StatusItem> statusItem(double length) override;

private:
    TrayStatusItem::Environment m_environment;
};

} // namespace zofra
