// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/TrayStatusItem.h"

#include "platform/ForeignText.h"
#include "platform/linux/DBusCalls.h"

#include <QCursor>
#include <QGuiApplication>
#include <QPalette>
#include <QToolTip>

#include <array>
#include <utility>

namespace zofra {

namespace {

constexpr auto flashTime = std::chrono::milliseconds(1500);
constexpr QChar figureSpace(0x2007);
const auto itemPath = QLatin1String("/StatusNotifierItem");
const auto menuPath = QLatin1String("/MenuBar");

const auto iconPrefix = QLatin1String("be.zofra.ZofraZofra.");
const auto symbolicSuffix = QLatin1String("-symbolic");

bool isPlasma(const TraySession& session) {
    return session.desktop.split(u':').contains(u"KDE");
}

/// Else tool tips are yellow, on dark desktops too.
void useMenuColours(const IconProvider& icons) {
    const auto style = icons.menuStyle();
    if (!style)
        return;
    QPalette palette = style->standardPalette();
    palette.setColor(QPalette::ToolTipBase, palette.color(QPalette::Window));
    palette.setColor(QPalette::ToolTipText, palette.color(QPalette::WindowText));
    QToolTip::setPalette(palette);
}

/// Asks the desktop to show the volume in its own way.
QDBusMessage volumeDisplay(int percent) {
    auto call =
        dbus::methodCall("org.kde.plasmashell", "/org/kde/osdService", "org.kde.osdService",
                         "mediaPlayerVolumeChanged", {percent, u"Zofra Zofra"_qs, u"be.zofra.ZofraZofra"_qs});
    call.setAutoStartService(false);
    return call;
}

} // namespace

QPoint placeOfClick(QPoint told, QPoint pointer) {
    // As far as from one end of an item to the other.
    constexpr int nearby = 64;
    return (told - pointer).manhattanLength() <= nearby ? told : pointer;
}

TrayStatusItem::TrayStatusItem(Environment environment)
    : m_environment(std::move(environment))
    , m_fallback({m_environment.bus, m_environment.mainQueue, m_environment.session.windows,
                  [this] { return m_panel && m_panel->hasWatcher(); }, [this] { showXEmbedIcon(); },
                  [this] { showWindow(); }}) {
    m_connected = m_environment.bus.observeConnected(
        [this](const QDBusConnection& connection) { busConnected(connection); });
    m_disconnected = m_environment.bus.observeDisconnected([this] { busDisconnected(); });
    m_fallback.start();
}

TrayStatusItem::~TrayStatusItem() = default;

void TrayStatusItem::busConnected(const QDBusConnection& connection) {
    m_connection = connection;
    m_item = std::make_unique<StatusNotifierObject>(
        connection,
        StatusNotifierObject::Paths{itemPath, menuPath, m_environment.iconFolder.value_or(QString())},
        itemHandlers());
    m_item->setContent(content());
    m_panel = std::make_unique<PanelWatch>(
        connection, PanelWatch::Handlers{[this](const QString& program) { panelAppeared(program); },
                                         [this] { panelDisappeared(); },
                                         [this](bool hasHost) { panelRegistered(hasHost); }});
}

void TrayStatusItem::busDisconnected() {
    m_panel.reset();
    m_menu.reset();
    m_item.reset();
    m_connection.reset();
    panelDisappeared();
}

StatusNotifierObject::Handlers TrayStatusItem::itemHandlers() {
    const auto click = [this](ButtonEvent event) {
        return [this, event](QPoint at) { clicked(event, placeOfClick(at, QCursor::pos())); };
    };
    return {.activate = click(ButtonEvent::leftMouseUp),
            .contextMenu = click(ButtonEvent::rightMouseUp),
            .secondaryActivate = [this] { secondaryActivated(); },
            .scroll = [this](int delta) { scrolled(delta); },
            .activationToken =
                [this](const QString& token) {
                    if (m_environment.activationToken)
                        m_environment.activationToken(token.toUtf8());
                },
            .pixmaps = [this](const QString& symbolName) { return pixmaps(symbolName); }};
}

void TrayStatusItem::panelAppeared(const QString& program) {
    TraySession session = m_environment.session;
    session.panelProgram = program;
    m_panelMode = trayMode(session);
    const PanelTraits traits = panelTraits(session);
    m_iconKind = traits.icon;
    m_wheel.setPanel(traits.wheel);
    m_item->setMode(m_panelMode, traits.toolTip);
    m_item->setContent(content());
    if (m_panelMode == StatusItemMode::direct) {
        m_menu.reset();
    } else if (!m_menu) {
        m_menu = std::make_unique<DBusMenuObject>(
            *m_connection, menuPath,
            DBusMenuObject::Environment{
                m_environment.mainQueue, [this] { return menuProvider ? menuProvider() : Menu(); },
                [this](const QString& symbolName) { return iconName(symbolName, TrayIconKind::symbolic); },
                QStringList(m_environment.iconFolder.value_or(QString()))});
    }
    m_panel->registerItem();
}

void TrayStatusItem::panelDisappeared() {
    const bool wasShown = m_mode == StatusItemMode::direct || m_mode == StatusItemMode::hostmenu;
    if (wasShown)
        m_mode = StatusItemMode::none;
    if (m_mode == StatusItemMode::none)
        m_fallback.start(wasShown ? TrayFallback::Patience::afterPanel : TrayFallback::Patience::first);
}

void TrayStatusItem::panelRegistered(bool hasHost) {
    // A watcher without a panel shows nothing; one may come within the time that is being waited.
    if (!hasHost)
        return;
    m_fallback.stop();
    m_xembed.reset();
    m_mode = m_panelMode;
    shown();
}

void TrayStatusItem::showWindow() {
    m_mode = StatusItemMode::window;
    if (!std::exchange(m_toldUnavailable, true) && onUnavailable)
        onUnavailable();
}

void TrayStatusItem::showXEmbedIcon() {
    m_xembed = std::make_unique<XEmbedIcon>(
        XEmbedIcon::Handlers{[this](ButtonEvent event) { clicked(event, QCursor::pos()); },
                             [this] { secondaryActivated(); }, [this](int delta) { scrolled(delta); }});
    m_mode = StatusItemMode::xembed;
    publish();
    m_xembed->show();
    shown();
}

void TrayStatusItem::shown() {
    if (onAvailable)
        onAvailable();
    if (m_environment.shown)
        m_environment.shown();
}

void TrayStatusItem::clicked(ButtonEvent event, QPoint at) {
    if ((m_eventMask & static_cast<unsigned>(event)) == 0 || !m_action)
        return;
    m_clickPoint = at;
    const auto action = m_action;
    action(event);
}

void TrayStatusItem::secondaryActivated() {
    if (onSecondaryActivate)
        onSecondaryActivate();
}

void TrayStatusItem::scrolled(int delta) {
    const int steps = m_wheel.add(delta);
    if (steps != 0 && onScroll)
        onScroll(steps);
}

void TrayStatusItem::setTitle(const QString& title) {
    m_title = title;
    publish();
}

void TrayStatusItem::setImage(const QString& symbolName, const QString& accessibilityDescription) {
    m_symbolName = symbolName;
    m_description = accessibilityDescription;
    publish();
}

void TrayStatusItem::setToolTip(const QString& toolTip) {
    m_toolTip = toolTip;
    publish();
}

void TrayStatusItem::menuDidChange() {
    if (m_menu)
        m_menu->menuDidChange();
}

void TrayStatusItem::setBuffering(bool isBuffering) {
    if (std::exchange(m_isBuffering, isBuffering) != isBuffering)
        publish();
}

void TrayStatusItem::flashVolume(int percent, const QString& text) {
    m_flash = text;
    m_flashing = m_environment.mainQueue.startTimer(flashTime, MainQueue::Repeat::once, [this] {
        m_flashing.reset();
        m_flash.clear();
        publish();
    });
    publish();
    // Few panels show a changed tool tip while the wheel is being turned.
    if (m_environment.session.windows == TraySession::Windows::x11) {
        useMenuColours(m_environment.icons);
        QToolTip::showText(QCursor::pos(), shownLine(text), nullptr, {}, static_cast<int>(flashTime.count()));
    } else if (m_connection && isPlasma(m_environment.session)) {
        m_connection->send(volumeDisplay(percent));
    }
}

StatusNotifierContent TrayStatusItem::content() const {
    const bool isFlashing = !m_flash.isEmpty();
    StatusNotifierContent content;
    content.title = shownLine(isFlashing ? m_flash : m_title);
    content.label = shownLine(m_title, maxLabelCharacters);
    if (isFlashing) {
        // As wide as before, or the item would shrink away from under the pointer that turns the wheel.
        const auto width = content.label.size();
        content.label = shownLine(m_flash, maxLabelCharacters).leftJustified(width, figureSpace);
    }
    content.symbolName = drawing();
    content.iconName = iconName(content.symbolName, m_iconKind);
    content.iconAccessibleDescription = shownLine(m_description);
    content.toolTip = shownLines(isFlashing ? m_flash + u'\n' + m_toolTip : m_toolTip);
    return content;
}

void TrayStatusItem::publish() {
    if (m_item)
        m_item->setContent(content());
    if (m_xembed) {
        QIcon icon;
        for (const int pixels : std::array{16, 22, 24, 32, 48})
            icon.addPixmap(QPixmap::fromImage(m_environment.icons.image(drawing(), pixels, Qt::white)));
        m_xembed->setIcon(icon);
        m_xembed->setToolTip(content().toolTip);
    }
}

double TrayStatusItem::height() const {
    return m_xembed ? m_xembed->geometry().height() : 0.0;
}

void TrayStatusItem::popUpMenu(const Menu& menu, QPointF location) {
    if (m_environment.session.windows != TraySession::Windows::x11) {
        // There a menu without a window below it would be placed like a window; our own panel does not mind.
        secondaryActivated();
        return;
    }
    // A panel tells where it was clicked, not where its button begins.
    const QRect geometry = m_xembed ? m_xembed->geometry() : QRect();
    const QPoint anchor = (geometry.isValid() ? geometry.topLeft() : m_clickPoint) + location.toPoint();
    // However often a panel asks, there is one menu.
    if (m_openMenu)
        m_openMenu->close();
    m_openMenu = new WidgetMenu(menu, m_environment.icons);
    m_openMenu->popUpAndForget(anchor);
}

QString TrayStatusItem::iconName(const QString& symbolName, TrayIconKind kind) const {
    if (!m_environment.iconFolder || kind == TrayIconKind::pixmaps)
        return {};
    return iconPrefix + symbolName + (kind == TrayIconKind::symbolic ? symbolicSuffix : QLatin1String());
}

QString TrayStatusItem::drawing() const {
    if (m_symbolName == u"play.fill")
        return u"tray.stopped"_qs;
    return m_isBuffering ? u"tray.buffering"_qs : u"tray.playing"_qs;
}

QList<BusPixmap> TrayStatusItem::pixmaps(const QString& symbolName) {
    if (m_pixmapsSymbol == symbolName)
        return m_pixmaps;
    m_pixmaps.clear();
    m_pixmapsSymbol = symbolName;
    for (const int pixels : std::array{22, 32, 48}) {
        const QImage image = m_environment.icons.image(symbolName, pixels, Qt::white);
        if (!image.isNull())
            m_pixmaps.append(BusPixmap::fromImage(image));
    }
    return m_pixmaps;
}

} // namespace zofra
