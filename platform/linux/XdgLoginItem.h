// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/LoginItem.h"

#include <QString>

namespace zofra {

/// Starting at login through the user's autostart folder. Main thread only.
class XdgLoginItem final : public LoginItem {
public:
    /// `program` is what is started, an absolute path.
    explicit XdgLoginItem(QString program = runningProgram());

    /// The path of this program's file; where it was replaced by an update, the path of the new one.
    [[nodiscard]] static QString runningProgram();
    /// autostart/be.zofra.ZofraZofra.desktop in the user's configuration folder.
    [[nodiscard]] static QString filePath();

    /// False also for a file that desktops pass over: one that says Hidden or that a settings dialog has
    /// switched off, or whose program is gone.
    [[nodiscard]] bool isEnabled() const override;
    [[nodiscard]] Result<void> registerItem() override;
    [[nodiscard]] Result<void> unregisterItem() override;

private:
    QString m_program;
};

} // namespace zofra
