// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/QtPopupWindow.h"

#include <QAccessible>
#include <QCursor>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QScreen>

#include <utility>

namespace zofra {

namespace {

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

} // namespace

std::vector<std::function<void()>> QtPopupWindowFactory::preparation(const PopupPanelContent& content) const {
    std::vector<std::function<void()>> steps;
    for (const QFont::Weight weight : {QFont::Normal, QFont::DemiBold, QFont::Bold}) {
        steps.emplace_back([weight] {
            const PanelMetrics metrics(QGuiApplication::font(), 96, 0);
            static_cast<void>(QFontMetrics(metrics.font(14, weight)).horizontalAdvance(u"Zofra Zofra"_qs));
        });
    }
    // Whoever makes the first widget asks the bus whether screen readers are about, and waits for the answer.
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

std::unique_ptr<PopupWindow> QtPopupWindowFactory::makeWindow(PopupPanelContent content) {
    return std::make_unique<QtPopupWindow>(std::move(content), m_environment, m_token);
}

} // namespace zofra
