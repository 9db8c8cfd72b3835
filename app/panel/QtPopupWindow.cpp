// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/QtPopupWindow.h"

#include "app/RadioControls.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QCloseEvent>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QPointer>
#include <QScreen>
#include <QShortcut>
#include <QVBoxLayout>
#include <QWindow>

#include <utility>

namespace zofra {

namespace {

/// The window itself; exactly as large as the panel in it.
class HostWindow final : public QWidget {
public:
    HostWindow(PopupPanelContent content, const PanelEnvironment& environment) {
        // The program lives in the status bar, whether or not this window is open.
        setAttribute(Qt::WA_QuitOnClose, false);
        // Where there is no tray, this window is all there is of the program.
        auto* quit = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q), this);
        connect(quit, &QShortcut::activated, this, [&controls = content.controls] { controls.quit(); });
        auto* rows = new QVBoxLayout(this);
        rows->setContentsMargins(0, 0, 0, 0);
        rows->setSizeConstraint(QLayout::SetFixedSize);
        auto* view = new AboutPopupView(std::move(content), environment, this);
        rows->addWidget(view);
    }

    std::function<void()> onClosed;
    bool wasUsed = false;

protected:
    bool event(QEvent* event) override {
        wasUsed = wasUsed || event->type() == QEvent::WindowActivate;
        return QWidget::event(event);
    }
    void closeEvent(QCloseEvent* event) override {
        event->accept();
        if (onClosed)
            onClosed();
    }
};

/// A plain widget would be told to screen readers as something in a window, not as one.
QAccessibleInterface* accessibleWindow(const QString&, QObject* object) {
    auto* host = dynamic_cast<HostWindow*>(object);
    return host ? new QAccessibleWidget(host, QAccessible::Window) : nullptr;
}

class QtPopupWindow final : public PopupWindow {
public:
    QtPopupWindow(PopupPanelContent content, const PanelEnvironment& environment,
                  std::shared_ptr<QByteArray> token)
        : m_host(new HostWindow(std::move(content), environment))
        , m_token(std::move(token)) {
        m_host->onClosed = [this] { tellClosing(); };
        QAccessible::installFactory(accessibleWindow); // once, however often it is said
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
        const QScreen* screen = m_host->screen();
        m_host->adjustSize();
        const QRect room = screen->availableGeometry();
        m_host->move(room.center() - QPoint(m_host->width() / 2, m_host->height() / 2));
    }

    void makeKeyAndOrderFront() override {
        const QByteArray token = std::exchange(*m_token, QByteArray());
        if (m_host->isMinimized())
            m_host->showNormal();
        else
            m_host->show();
        m_host->raise();
        // Qt takes the token of a start from here when a window asks for the keyboard, and forgets it then.
        if (!token.isEmpty() && QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
            qputenv("XDG_ACTIVATION_TOKEN", token);
        m_host->activateWindow();
    }

    void orderFront() override {
        m_host->setAttribute(Qt::WA_ShowWithoutActivating);
        m_host->show();
        m_host->setAttribute(Qt::WA_ShowWithoutActivating, false);
    }

    bool wasUsed() const override { return m_host->wasUsed; }

    void close() override { m_host->close(); }

private:
    void tellClosing() {
        // A copy: the handler may destroy this window and with it the handler.
        if (const auto handler = std::exchange(onWillClose, nullptr))
            handler(*this);
    }

    HostWindow* m_host;
    std::shared_ptr<QByteArray> m_token;
};

} // namespace

std::vector<std::function<void()>> QtPopupWindowFactory::preparation(const PopupPanelContent& content) const {
    std::vector<std::function<void()>> steps;
    for (const QFont::Weight weight : {QFont::Normal, QFont::DemiBold, QFont::Bold}) {
        steps.emplace_back([weight] {
            const PanelMetrics metrics(QGuiApplication::font(), 96, 0);
            static_cast<void>(
                QFontMetrics(metrics.font(14, weight)).horizontalAdvance(QStringLiteral("Zofra Zofra")));
        });
    }
    // Whoever makes the first widget asks the bus whether screen readers are about, and waits for the answer.
    steps.emplace_back([] { static_cast<void>(QAccessible::isActive()); });
    const auto window = std::make_shared<std::unique_ptr<HostWindow>>();
    steps.emplace_back([window, content, environment = m_environment] {
        *window = std::make_unique<HostWindow>(content, environment);
    });
    steps.emplace_back([window] { static_cast<void>((*window)->grab()); });
    steps.emplace_back([window] {
        // Elsewhere a window that is not shown yet costs nothing.
        if (QGuiApplication::platformName() == QLatin1String("xcb"))
            static_cast<void>((*window)->winId());
    });
    steps.emplace_back([window] { window->reset(); });
    return steps;
}

std::unique_ptr<PopupWindow> QtPopupWindowFactory::makeWindow(PopupPanelContent content) {
    return std::make_unique<QtPopupWindow>(std::move(content), m_environment, m_token);
}

} // namespace zofra
