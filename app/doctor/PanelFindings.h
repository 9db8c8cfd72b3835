// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/Finding.h"
#include "platform/linux/tray/TrayMode.h"

namespace zofra::doctor {

/// What is known of the desktop that the program would show itself on.
struct DesktopFacts {
    /// A start without status item and window is to be judged.
    bool isHeadless = false;
    /// The toolkit's name of the window system that answers: "xcb", "wayland"; empty when none does.
    QString platform;
    /// What the environment says about displays: "DISPLAY=:0".
    QString variables;
    /// As the program sees it.
    TraySession session;
    /// Somebody watches over status items; its program is in `session`.
    bool hasWatcher = false;
    /// A panel is there to show them.
    bool hasPanel = false;
    /// There is a tray of the old kind, as X11 panels have.
    bool hasOldTray = false;
};

[[nodiscard]] Finding judgeSession(const DesktopFacts& facts, AppLanguage language = AppLanguage::en);
/// Which panel there is, in which way the status item would be shown, and why in that one.
[[nodiscard]] Finding judgePanel(const DesktopFacts& facts, AppLanguage language = AppLanguage::en);

} // namespace zofra::doctor
