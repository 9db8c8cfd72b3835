// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/AboutPopupView.h"

#include "app/RadioControls.h"
#include "app/panel/CheckBox.h"
#include "app/panel/CreditLine.h"
#include "app/panel/MenuButton.h"
#include "app/panel/PanelAccess.h"
#include "app/panel/PanelMenus.h"
#include "app/panel/PanelParts.h"
#include "app/panel/PlayButton.h"
#include "app/panel/VolumeSlider.h"

#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QLayout>
#include <QPaintEvent>
#include <QScreen>
#include <QSignalBlocker>
#include <QUrl>

namespace zofra {

namespace {

/// What the panel posts to itself.
constexpr auto rebuildEvent = static_cast<QEvent::Type>(QEvent::User + 1);

PanelLook makeLook(const PanelEnvironment& environment, const QWidget& widget) {
    return {PanelTheme::make(environment.appearance.current(), widget.palette()),
            PanelMetrics(widget.font(), widget.logicalDpiY(), widget.screen()->availableGeometry().height())};
}

} // namespace

AboutPopupView::AboutPopupView(PopupPanelContent content, const PanelEnvironment& environment,
                               QWidget* parent)
    : QWidget(parent)
    , m_content(std::move(content))
    , m_environment(environment)
    , m_source(environment.mainQueue, m_content.objects)
    , m_look(makeLook(environment, *this)) {
    installPanelAccess(); // before anybody asks what this is
    setAttribute(Qt::WA_OpaquePaintEvent);
    // The program lives in the status bar, whether or not this window is open.
    setAttribute(Qt::WA_QuitOnClose, false);
    setAccessibleName(u"Zofra Zofra"_qs);
    // Of this window only: giving each menu a picture for the task bar would make it come later.
    setWindowIcon(IconSet::icon(u"ZofraLogo"_qs, Qt::white));
    build();
    m_stateChanged = m_source.observe([this](const RadioState& state) { refresh(state); });
    m_appearanceChanged = m_environment.appearance.observeChanged([this] { updateLook(); });
}

AboutPopupView::~AboutPopupView() = default;

void AboutPopupView::build() {
    m_parts = std::make_unique<PanelParts>(*this, m_look, m_content.version);
    connectParts();
    refresh(m_source.now());
    showLaunchAtLogin();
    // Return closes wherever the mouse is used, and whoever comes with the keyboard starts here.
    m_parts->close->setFocus();
}

void AboutPopupView::connectParts() {
    RadioControls& controls = m_content.controls;
    for (LanguageButton* button : m_parts->languages)
        connect(button, &QPushButton::clicked, this,
                [&controls, language = button->language()] { controls.chooseLanguage(language); });
    m_parts->station->makeEntries = [this] {
        return PanelMenus::stations(m_source.now(), m_content.controls);
    };
    m_parts->output->makeEntries = [this] { return PanelMenus::outputs(m_source.now(), m_content.controls); };
    connect(m_parts->play, &QPushButton::clicked, this, [&controls] { controls.toggle(); });
    m_parts->volume->onMoved = [&controls](float volume) { controls.setVolume(volume); };
    connect(m_parts->credit->link(), &QPushButton::clicked, this,
            [this] { m_environment.workspace.open(QUrl(u"mailto:hello@zofra.example"_qs)); });
    connect(m_parts->launchAtLogin, &QPushButton::toggled, this, &AboutPopupView::launchAtLoginToggled);
    connect(m_parts->close, &QPushButton::clicked, this, &AboutPopupView::askToClose);
}

void AboutPopupView::refresh(const RadioState& state) {
    ++m_refreshCount;
    m_parts->show(state);
    updateNaturalSize();
    // Now rather than in a later turn, or one frame would show the new texts in the places of the old ones.
    layout()->activate();
}

void AboutPopupView::updateNaturalSize() {
    QLayout* rows = layout();
    const int width = m_parts->width();
    setFixedSize(width, rows->hasHeightForWidth() ? rows->totalHeightForWidth(width)
                                                  : rows->totalSizeHint().height());
}

void AboutPopupView::centerOn(QScreen* screen) {
    setScreen(screen);
    const PanelLook now = makeLook(m_environment, *this);
    if (now.metrics != m_look.metrics) {
        m_look.metrics = now.metrics;
        build();
    }
    move(screen->availableGeometry().center() - QPoint(width() / 2, height() / 2));
}

void AboutPopupView::updateLook() {
    const PanelLook now = makeLook(m_environment, *this);
    if (now.metrics != m_look.metrics && !m_isRebuildScheduled) {
        m_isRebuildScheduled = true;
        // Later, for whoever announces a new font is still going through the widgets that would be deleted.
        QCoreApplication::postEvent(this, new QEvent(rebuildEvent));
    }
    if (now.theme == m_look.theme)
        return;
    m_look.theme = now.theme;
    update();
    const auto parts = findChildren<QWidget*>();
    for (QWidget* part : parts)
        part->update();
}

bool AboutPopupView::event(QEvent* event) {
    if (event->type() == rebuildEvent) {
        m_isRebuildScheduled = false;
        m_look.metrics = makeLook(m_environment, *this).metrics;
        build();
        return true;
    }
    m_wasUsed = m_wasUsed || event->type() == QEvent::WindowActivate;
    const bool isHandled = QWidget::event(event);
    if (event->type() == QEvent::LayoutRequest)
        updateNaturalSize();
    return isHandled;
}

void AboutPopupView::changeEvent(QEvent* event) {
    const auto type = event->type();
    if (type == QEvent::PaletteChange || type == QEvent::FontChange || type == QEvent::StyleChange)
        updateLook();
    QWidget::changeEvent(event);
}

void AboutPopupView::closeEvent(QCloseEvent* event) {
    event->accept();
    if (onClosed)
        onClosed();
}

void AboutPopupView::contextMenuEvent(QContextMenuEvent* event) {
    showMenu(event->globalPos());
}

void AboutPopupView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        m_parts->close->click();
    else if (event->matches(QKeySequence::Cancel) || event->matches(QKeySequence::Close))
        askToClose();
    else if (event->keyCombination() == (Qt::CTRL | Qt::Key_P))
        m_content.controls.toggle();
    else if (event->keyCombination() == (Qt::CTRL | Qt::Key_Q))
        m_content.controls.quit(); // where there is no tray, this window is all there is of the program
    else if (event->keyCombination() == (Qt::SHIFT | Qt::Key_F10))
        showMenuAtFocus(); // the menu key comes as an event of its own
    else
        QWidget::keyPressEvent(event);
}

void AboutPopupView::paintEvent(QPaintEvent* event) {
    QPainter(this).fillRect(event->rect(), m_look.theme.window);
}

void AboutPopupView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (event->spontaneous())
        return;
    m_launchAtLogin = m_environment.loginItem.isEnabled();
    showLaunchAtLogin();
}

void AboutPopupView::askToClose() {
    // A copy, for it may end the panel.
    if (const auto onClose = m_content.onClose)
        onClose();
}

void AboutPopupView::showMenu(QPoint at) {
    if (m_content.menu && m_environment.popUpMenu)
        m_environment.popUpMenu(m_content.menu(), at, *this);
}

void AboutPopupView::showMenuAtFocus() {
    const QWidget* part = focusWidget() ? focusWidget() : this;
    showMenu(part->mapToGlobal(part->rect().bottomLeft()));
}

void AboutPopupView::showLaunchAtLogin() {
    const QSignalBlocker quiet(m_parts->launchAtLogin);
    m_parts->launchAtLogin->setChecked(m_launchAtLogin);
}

void AboutPopupView::launchAtLoginToggled(bool isOn) {
    m_launchAtLogin = isOn;
    updateLaunchAtLogin(isOn);
    // After a failure the box shows what is true, not what was wished for.
    m_launchAtLogin = m_environment.loginItem.isEnabled();
    showLaunchAtLogin();
}

void AboutPopupView::updateLaunchAtLogin(bool enabled) {
    LoginItem& item = m_environment.loginItem;
    if (item.isEnabled() == enabled)
        return;
    const auto done = enabled ? item.registerItem() : item.unregisterItem();
    if (!done)
        m_environment.output.writeLine(u"Error changing launch at login status: "_qs + done.error());
}

} // namespace zofra
