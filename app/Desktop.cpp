// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Desktop.h"

#include "app/icons/IconSet.h"
#include "app/panel/AppearanceSource.h"
#include "app/panel/PanelMenuStyle.h"
#include "app/panel/PortalAppearance.h"
#include "app/panel/QtPopupWindow.h"
#include "platform/linux/IconTheme.h"
#include "platform/linux/XdgLoginItem.h"
#include "platform/linux/tray/TrayStatusItem.h"
#include "platform/linux/tray/WidgetMenu.h"
#include "platform/linux/x11/XServer.h"

#include <QApplication>
#include <QScreen>

namespace zofra {

namespace {

/// The drawings for the status item and its menu, which looks like the panel's menus.
class SymbolIcons final : public IconProvider {
public:
    explicit SymbolIcons(AppearanceSource& appearance)
        : m_appearance(appearance) {}
    QImage image(const QString& symbolName, int pixels, const QColor& color) const override {
        return IconSet::image(symbolName, pixels, color);
    }
    std::shared_ptr<QStyle> menuStyle() const override {
        const QScreen* screen = QGuiApplication::primaryScreen();
        if (!screen)
            return nullptr;
        const PanelMetrics metrics(QGuiApplication::font(), screen->logicalDotsPerInchY(),
                                   screen->availableGeometry().height());
        return std::make_shared<PanelMenuStyle>(metrics, m_appearance);
    }

private:
    AppearanceSource& m_appearance;
};

/// What only the panel needs.
struct PanelSide {
    PanelSide(const Desktop::Environment& environment, AppearanceSource& appearance,
              const IconProvider& symbols)
        : portal(appearance)
        , factory(PanelEnvironment{loginItem, environment.mainQueue, environment.output,
                                   environment.workspace, appearance,
                                   [&symbols](const Menu& menu, QPoint at, QWidget& window) {
                                       (new WidgetMenu(menu, symbols, &window))->popUpAndForget(at);
                                   }})
        , connected(environment.sessionBus.observeConnected(
              [this](const QDBusConnection& connection) { portal.attach(connection); })) {}

    XdgLoginItem loginItem;
    PortalAppearance portal;
    QtPopupWindowFactory factory;
    ObservationToken connected;
};

class QtDesktop final : public Desktop, private StatusBar, private PopupWindowFactory {
public:
    explicit QtDesktop(const Environment& environment)
        : m_environment(environment)
        , m_symbols(m_appearance) {
        // Once the item is there: the first panel is to know light from dark, which takes a while to ask.
        m_environment.mainQueue.async([this] { panel(); });
    }

    StatusBar& statusBar() override { return *this; }
    PopupWindowFactory& windows() override { return *this; }
    void setActivationToken(const QByteArray& token) override {
        if (!token.isEmpty())
            panel().factory.setActivationToken(token);
    }
    void hideEverything() override { QApplication::closeAllWindows(); }
    IdleSteps preparation(const PopupPanelContent& content, const Menu& menu) override {
        IdleSteps steps = panel().factory.preparation(content);
        steps.emplace_back([this, menu] {
            // Only there is the menu one of our own.
            if (QGuiApplication::platformName() == u"xcb")
                static_cast<void>(WidgetMenu(menu, m_symbols).grab());
        });
        return steps;
    }

private:
    /// Panels decide about lengths themselves.
    std::unique_ptr<StatusItem> statusItem(double) override {
        return std::make_unique<TrayStatusItem>(itemEnvironment());
    }
    std::unique_ptr<PopupWindow> makeWindow(PopupPanelContent content) override {
        return panel().factory.makeWindow(std::move(content));
    }

    PanelSide& panel() {
        if (!m_panel)
            m_panel = std::make_unique<PanelSide>(m_environment, m_appearance, m_symbols);
        return *m_panel;
    }

    void clickAnnounced(const QByteArray& token) {
        setActivationToken(token);
        // Else the pointer is busy until the desktop gives up waiting for a window.
        if (const auto server = XServer::ofToolkit())
            server->endStartup(QString::fromUtf8(token));
    }

    TrayStatusItem::Environment itemEnvironment() {
        const QString setting = m_environment.defaults.string(u"tray/mode"_qs).value_or(QString());
        return {m_environment.sessionBus,
                m_environment.mainQueue,
                m_symbols,
                traySessionFromEnvironment(QGuiApplication::platformName(), setting),
                icontheme::unusualFolder(),
                m_environment.itemChanged,
                [this](const QByteArray& token) { clickAnnounced(token); }};
    }

    Environment m_environment;
    AppearanceSource m_appearance;
    SymbolIcons m_symbols;
    std::unique_ptr<PanelSide> m_panel;
};

class NoDesktop final : public Desktop, private StatusBar, private PopupWindowFactory {
public:
    StatusBar& statusBar() override { return *this; }
    PopupWindowFactory& windows() override { return *this; }
    void setActivationToken(const QByteArray&) override {}
    void hideEverything() override {}
    IdleSteps preparation(const PopupPanelContent&, const Menu&) override { return {}; }

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
