// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/AboutPopupView.h"
#include "app/panel/AppearanceSource.h"
#include "app/panel/MenuButton.h"
#include "tests/app/RadioWorld.h"

#include <QCoreApplication>

#include <memory>

namespace zofra::test {

/// A login item in memory.
class FakeLoginItem final : public LoginItem {
public:
    bool isEnabled() const override {
        ++reads;
        return enabled;
    }
    Result<void> registerItem() override { return change(true, QStringLiteral("register")); }
    Result<void> unregisterItem() override { return change(false, QStringLiteral("unregister")); }

    bool enabled = false;
    std::optional<QString> failure;
    QStringList calls;
    mutable int reads = 0;

private:
    Result<void> change(bool goal, const QString& call) {
        calls << call;
        if (failure)
            return zofra::failure(*failure);
        enabled = goal;
        return {};
    }
};

[[nodiscard]] inline SonosRoom makeRoom(const QString& id, const QString& name) {
    SonosSpeaker speaker;
    speaker.id = id;
    speaker.ip = QStringLiteral("192.0.2.7");
    speaker.roomName = name;
    speaker.model = QStringLiteral("Sonos One");
    return {name, speaker, {speaker}};
}

/// The station menu's button and the output menu's, in this order.
[[nodiscard]] inline QList<MenuButton*> menuButtons(const QWidget& view) {
    QList<MenuButton*> found;
    const auto children = view.findChildren<QPushButton*>();
    for (QPushButton* child : children) {
        if (auto* button = dynamic_cast<MenuButton*>(child))
            found << button;
    }
    return found;
}

/// Everything the panel shows and moves, real, over fakes of what is outside of the program.
class PanelWorld : public RadioWorld {
public:
    using RadioWorld::RadioWorld;

    /// The panel, not yet shown.
    std::unique_ptr<AboutPopupView> makeView() {
        PopupPanelContent content{QStringLiteral("1.0 (Build 1)"),
                                  {viewModel, player, sonos, languages},
                                  [this] { calls << QStringLiteral("close"); },
                                  controls,
                                  [] { return Menu(10); }};
        return std::make_unique<AboutPopupView>(std::move(content), environment());
    }

    PanelEnvironment environment() {
        return {loginItem,
                queue,
                output,
                workspace,
                appearance,
                [this](const Menu& menu, QPoint at, QWidget& window) {
                    calls << QStringLiteral("menu of %1").arg(menu.size());
                    menuPlace = window.mapFromGlobal(at);
                }};
    }

    /// Lets main queue and event loop turn until nothing is waiting.
    void settle() {
        queue.drain();
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }

    FakeLoginItem loginItem;
    AppearanceSource appearance;
    /// Where in the panel a menu was last shown.
    QPoint menuPlace;
};

} // namespace zofra::test
