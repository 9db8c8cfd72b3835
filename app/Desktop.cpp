// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Desktop.h"

#include "app/icons/IconSet.h"
#include "app/panel/AppearanceSource.h"
#include "app/panel/PortalAppearance.h"
#include "app/panel/QtPopupWindow.h"
#include "platform/linux/XdgLoginItem.h"
#include "platform/linux/tray/LinuxStatusBar.h"

#include <QApplication>

namespace zofra {

namespace {

/// The drawings for the status item and its menu.
class SymbolIcons final : public IconProvider {
public:
    explicit SymbolIcons(const IconSet& icons)
        : m_icons(icons) {}
    QImage image(const QString& symbolName, int pixels, const QColor& color) const override {
        return m_icons.image(symbolName, pixels, color);
    }

private:
    const IconSet& m_icons;
};

/// What only the panel needs; made when it is first asked for, for many people never open it.
struct PanelParts {
    PanelParts(const Desktop::Environment& environment, const IconSet& icons)
        : portal(appearance)
        , factory(PanelEnvironment{loginItem, environment.output, environment.workspace, icons, appearance})
        , connected(environment.sessionBus.observeConnected(
              [this](const QDBusConnection& connection) { portal.attach(connection); })) {}

    XdgLoginItem loginItem;
    AppearanceSource appearance;
    PortalAppearance portal;
    QtPopupWindowFactory factory;
    ObservationToken connected;
};

class QtDesktop final : public Desktop, private PopupWindowFactory {
public:
    explicit QtDesktop(const Environment& environment)
        : m_environment(environment)
        , m_symbols(m_icons)
        , m_statusBar(itemEnvironment()) {}

    StatusBar& statusBar() override { return m_statusBar; }
    PopupWindowFactory& windows() override { return *this; }
    void setActivationToken(const QByteArray& token) override {
        if (!token.isEmpty())
            panel().factory.setActivationToken(token);
    }
    void hideEverything() override { QApplication::closeAllWindows(); }

private:
    std::unique_ptr<PopupWindow> makeWindow(PopupPanelContent content) override {
        return panel().factory.makeWindow(std::move(content));
    }

    PanelParts& panel() {
        if (!m_panel)
            m_panel = std::make_unique<PanelParts>(m_environment, m_icons);
        return *m_panel;
    }

    TrayStatusItem::Environment itemEnvironment() {
        const QString setting =
            m_environment.defaults.string(QStringLiteral("tray/mode")).value_or(QString());
        return {m_environment.sessionBus,
                m_environment.mainQueue,
                m_symbols,
                traySessionFromEnvironment(QGuiApplication::platformName(), setting),
                m_environment.itemChanged,
                [this](const QByteArray& token) { setActivationToken(token); }};
    }

    Environment m_environment;
    IconSet m_icons;
    SymbolIcons m_symbols;
    LinuxStatusBar m_statusBar;
    std::unique_ptr<PanelParts> m_panel;
};

class NoDesktop final : public Desktop, private StatusBar, private PopupWindowFactory {
public:
    StatusBar& statusBar() override { return *this; }
    PopupWindowFactory& windows() override { return *this; }
    void setActivationToken(const QByteArray&) override {}
    void hideEverything() override {}

private:
    std::unique_ptr<StatusItem> statusItem(double) override { return nullptr; }
    std::unique_ptr<PopupWindow> makeWindow(PopupPanelContent) override { return nullptr; }
};

} // namespace

std::unique_ptr<Desktop> makeDesktop(const Desktop::Environment& environment) {
    return std::make_unique<QtDesktop>(environment);
}

std::unique_ptr<Desktop> makeNoDesktop() {
    return std::make_unique<NoDesktop>();
}

} // namespace zofra
