// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/IdleSteps.h"
#include "app/PopupWindow.h"
#include "platform/DefaultsStore.h"
#include "platform/MainQueue.h"
#include "platform/StatusItem.h"
#include "platform/SystemLog.h"
#include "platform/Workspace.h"
#include "platform/linux/SessionBus.h"

#include <QByteArray>

#include <memory>

namespace zofra {

/// What the program shows itself with: status bar and popup window, or nothing of both. Main thread only.
class Desktop {
public:
    struct Environment {
        SessionBus& sessionBus;
        MainQueue& mainQueue;
        DefaultsStore& defaults;
        StandardOutput& output;
        Workspace& workspace;
        /// The item has appeared, gone, or changed its way.
        std::function<void()> itemChanged;
    };
    virtual ~Desktop() = default;

    [[nodiscard]] virtual StatusBar& statusBar() = 0;
    [[nodiscard]] virtual PopupWindowFactory& windows() = 0;
    /// Whoever asks for a window passes on the right to the keyboard by this token.
    virtual void setActivationToken(const QByteArray& token) = 0;
    virtual void hideEverything() = 0;
    /// What the first click of each kind would otherwise wait for, as `content` and `menu` are now.
    [[nodiscard]] virtual IdleSteps preparation(const PopupPanelContent& content, const Menu& menu) = 0;
};

[[nodiscard]] std::unique_ptr<Desktop> makeDesktop(const Desktop::Environment& environment);
/// For a program without a display.
[[nodiscard]] std::unique_ptr<Desktop> makeNoDesktop();

} // namespace zofra
