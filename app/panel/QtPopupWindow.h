// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/IdleSteps.h"
#include "app/PopupWindow.h"
#include "app/panel/AboutPopupView.h"

#include <QAccessible>
#include <QByteArray>
#include <QCursor>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QScreen>

#include <memory>
#include <utility>

namespace zofra {

/// The panel as a window, ended in a later turn: it may be destroyed from within one of its own handlers.
class QtPopupWindow final : public PopupWindow {
public:
    QtPopupWindow(PopupPanelContent content, const PanelEnvironment& environment,
                  std::shared_ptr<QByteArray> token)
        : m_host(new AboutPopupView(std::move(content), environment))
        , m_token(std::move(token)) {
        m_host->onClosed = [this] {
            // A copy: the handler may destroy this window and with it the handler.
            if (const auto handler = std::exchange(onWillClose, nullptr))
                handler(*this);
        };
    }
    QtPopupWindow(const QtPopupWindow&) = delete;
    QtPopupWindow& operator=(const QtPopupWindow&) = delete;
    ~QtPopupWindow() override {
        // Perhaps from within one of the window's own event handlers, so it ends later.
        m_host->onClosed = nullptr;
        m_host->hide();
        m_host->deleteLater();
    }

    void setTitle(const QString& title) override { m_host->setWindowTitle(title); }

    void setStyle(unsigned styleMask) override {
        Qt::WindowFlags flags = Qt::Window | Qt::CustomizeWindowHint;
        if ((styleMask & static_cast<unsigned>(WindowStyle::titled)) != 0)
            flags |= Qt::WindowTitleHint | Qt::WindowSystemMenuHint;
        if ((styleMask & static_cast<unsigned>(WindowStyle::closable)) != 0)
            flags |= Qt::WindowCloseButtonHint;
        m_host->setWindowFlags(flags);
    }

    void center() override {
        // Whoever asked for the window did so where the pointer is.
        QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
        m_host->centerOn(screen ? screen : m_host->screen());
    }

    void makeKeyAndOrderFront() override {
        const QByteArray token = std::exchange(*m_token, QByteArray());
        if (m_host->isMinimized())
            m_host->showNormal();
        else
            m_host->show();
        m_host->raise();
        // Qt takes the token of a start from here when a window asks for the keyboard, and forgets it then.
        if (!token.isEmpty() && QGuiApplication::platformName().startsWith(u"wayland"))
            qputenv("XDG_ACTIVATION_TOKEN", token);
        m_host->activateWindow();
    }

    void orderFront() override {
        m_host->setAttribute(Qt::WA_ShowWithoutActivating);
        m_host->show();
        m_host->setAttribute(Qt::WA_ShowWithoutActivating, false);
    }

    bool wasUsed() const override { return m_host->wasUsed(); }

    void close() override { m_host->close(); }

private:
    AboutPopupView* m_host;
    std::shared_ptr<QByteArray> m_token;
};

/// Makes popup windows as ordinary top-level windows, on X11 and on Wayland.
class QtPopupWindowFactory final : public PopupWindowFactory {
public:
    explicit QtPopupWindowFactory(const PanelEnvironment& environment)
        : m_environment(environment) {}

    [[nodiscard]] std::unique_ptr<PopupWindow> makeWindow(PopupPanelContent content) override {
        return std::make_unique<QtPopupWindow>(std::move(content), m_environment, m_token);
    }

    /// What the first window would wait for (fonts, drawings, what the toolkit does once), done beforehand,
    /// so that it appears within a frame too. Some 25 ms of work in steps of a few, each for an idle moment
    /// after the start and in their order; they may be left out. Nothing is shown.
    [[nodiscard]] IdleSteps preparation(const PopupPanelContent& content) const {
        IdleSteps steps;
        for (const QFont::Weight weight : {QFont::Normal, QFont::DemiBold, QFont::Bold}) {
            steps.emplace_back([weight] {
                const PanelMetrics metrics(QGuiApplication::font(), 96, 0);
                static_cast<void>(
                    QFontMetrics(metrics.font(14, weight)).horizontalAdvance(u"Zofra Zofra"_qs));
            });
        }
        // Whoever makes the first widget asks the bus whether screen readers are about, and waits for the
        // answer.
        steps.emplace_back([] { static_cast<void>(QAccessible::isActive()); });
        const auto window = std::make_shared<std::unique_ptr<AboutPopupView>>();
        steps.emplace_back([window, content, environment = m_environment] {
            *window = std::make_unique<AboutPopupView>(content, environment);
        });
        steps.emplace_back([window] { static_cast<void>((*window)->grab()); });
        steps.emplace_back([window] {
            // Elsewhere a window that is not shown yet costs nothing.
            if (QGuiApplication::platformName() == u"xcb")
                static_cast<void>((*window)->winId());
        });
        steps.emplace_back([window] { window->reset(); });
        return steps;
    }

    /// The token with which whoever asked for the window (a second start, a click in a panel) passes on the
    /// right to the keyboard. Used up by the next `makeKeyAndOrderFront`; an empty one is none.
    void setActivationToken(QByteArray token) { *m_token = std::move(token); }

private:
    PanelEnvironment m_environment;
    std::shared_ptr<QByteArray> m_token = std::make_shared<QByteArray>();
};

} // namespace zofra
