// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/TrayStatusItem.h"

#include "platform/ForeignText.h"

#include <QCursor>
#include <QGuiApplication>
#include <QPainter>
#include <QPalette>
#include <QToolTip>

#include <algorithm>
#include <array>
#include <utility>

namespace zofra {

namespace {

constexpr int maxWheelDelta = 1'000'000;
constexpr auto flashTime = std::chrono::milliseconds(1500);
constexpr QChar figureSpace(0x2007);
const auto itemPath = QLatin1String("/StatusNotifierItem");
const auto menuPath = QLatin1String("/MenuBar");

/// Icons that every theme has, in the place of our drawings.
QString standardIconName(const QString& symbolName) {
    static const std::array<std::pair<QLatin1String, QLatin1String>, 8> names{{
        {QLatin1String("play.fill"), QLatin1String("media-playback-start")},
        {QLatin1String("speaker.wave.2.fill"), QLatin1String("audio-volume-high")},
        {QLatin1String("antenna.radiowaves.left.and.right"), QLatin1String("network-wireless")},
        {QLatin1String("hifispeaker.2.fill"), QLatin1String("audio-speakers")},
        {QLatin1String("music.note"), QLatin1String("audio-x-generic")},
        {QLatin1String("forward.end.fill"), QLatin1String("media-skip-forward")},
        {QLatin1String("info.circle"), QLatin1String("help-about")},
        {QLatin1String("power"), QLatin1String("application-exit")},
    }};
    for (const auto& [symbol, standard] : names) {
        if (symbol == symbolName)
            return standard;
    }
    return {};
}

/// A drawing with a faint edge in the opposite tone: nobody tells what colour the panel behind it has.
QImage withEdge(const IconProvider& icons, const QString& symbolName, int pixels) {
    const QColor color = QGuiApplication::palette().color(QPalette::WindowText);
    const QColor opposite = color.lightness() < 128 ? QColor(Qt::white) : QColor(Qt::black);
    QImage glyph = icons.image(symbolName, pixels, color);
    if (glyph.isNull())
        return glyph;
    const QImage edge = icons.image(symbolName, pixels, opposite);
    QImage image(glyph.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setOpacity(0.5);
    for (const QPoint offset : {QPoint(-1, 0), QPoint(1, 0), QPoint(0, -1), QPoint(0, 1)})
        painter.drawImage(offset, edge);
    painter.setOpacity(1.0);
    painter.drawImage(0, 0, glyph);
    return image;
}

} // namespace

TrayStatusItem::TrayStatusItem(Environment environment)
    : m_environment(std::move(environment))
    , m_fallback({m_environment.bus, m_environment.mainQueue, m_environment.session.windows,
                  [this] { showXEmbedIcon(); }, [this] { showWindow(); }}) {
    m_fallback.start();
    m_connected = m_environment.bus.observeConnected(
        [this](const QDBusConnection& connection) { busConnected(connection); });
    m_disconnected = m_environment.bus.observeDisconnected([this] { busDisconnected(); });
}

TrayStatusItem::~TrayStatusItem() = default;

void TrayStatusItem::busConnected(const QDBusConnection& connection) {
    m_connection = connection;
    m_item = std::make_unique<StatusNotifierObject>(connection, itemPath, menuPath, itemHandlers());
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
    StatusNotifierObject::Handlers handlers;
    handlers.activate = [this](QPoint at) { clicked(ButtonEvent::leftMouseUp, at); };
    handlers.contextMenu = [this](QPoint at) { clicked(ButtonEvent::rightMouseUp, at); };
    handlers.secondaryActivate = [this] {
        if (onSecondaryActivate)
            onSecondaryActivate();
    };
    handlers.scroll = [this](int delta) {
        // The least number there is has no opposite.
        scrolled(m_wheelSign == TrayWheel::positiveIsUp ? delta : -std::max(delta, -maxWheelDelta));
    };
    handlers.activationToken = [this](const QString& token) {
        if (m_environment.activationToken)
            m_environment.activationToken(token.toUtf8());
    };
    handlers.pixmaps = [this](const QString& symbolName) { return pixmaps(symbolName); };
    return handlers;
}

void TrayStatusItem::panelAppeared(const QString& program) {
    TraySession session = m_environment.session;
    session.panelProgram = program;
    m_way = trayWay(session);
    m_iconSource = trayIconSource(session);
    m_wheelSign = trayWheel(session);
    m_item->setWay(m_way, trayToolTipText(session));
    m_item->setContent(content());
    if (m_way == StatusNotifierObject::Way::direct) {
        m_menu.reset();
    } else if (!m_menu) {
        m_menu = std::make_unique<DBusMenuObject>(
            *m_connection, menuPath,
            DBusMenuObject::Environment{m_environment.mainQueue,
                                        [this] { return menuProvider ? menuProvider() : Menu(); },
                                        [this](const QString& name) { return iconProperties(name); },
                                        {}});
    }
    m_panel->registerItem();
}

void TrayStatusItem::panelDisappeared() {
    if (m_mode == StatusItemMode::direct || m_mode == StatusItemMode::hostmenu)
        m_mode = StatusItemMode::none;
    if (m_mode == StatusItemMode::none)
        m_fallback.start();
}

void TrayStatusItem::panelRegistered(bool hasHost) {
    // A watcher without a panel shows nothing; one may come within the time that is being waited.
    if (!hasHost)
        return;
    m_fallback.stop();
    m_xembed.reset();
    m_mode = m_way == StatusNotifierObject::Way::direct ? StatusItemMode::direct : StatusItemMode::hostmenu;
    if (m_environment.registered)
        m_environment.registered();
}

void TrayStatusItem::showWindow() {
    m_mode = StatusItemMode::window;
    if (!std::exchange(m_toldUnavailable, true) && onUnavailable)
        onUnavailable();
}

void TrayStatusItem::showXEmbedIcon() {
    m_xembed = std::make_unique<XEmbedIcon>(
        XEmbedIcon::Handlers{[this](ButtonEvent event) { clicked(event, QCursor::pos()); },
                             [this] {
                                 if (onSecondaryActivate)
                                     onSecondaryActivate();
                             },
                             [this](int delta) { scrolled(delta); }});
    m_mode = StatusItemMode::xembed;
    publish();
    m_xembed->show();
}

void TrayStatusItem::clicked(ButtonEvent event, QPoint at) {
    if ((m_eventMask & static_cast<unsigned>(event)) == 0 || !m_action)
        return;
    m_clickPoint = at;
    const auto action = m_action;
    action(event);
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

void TrayStatusItem::setImagePosition(ImagePosition position) {
    // Panels that show the text at all show it after the image.
    Q_UNUSED(position)
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

void TrayStatusItem::flash(const QString& text) {
    m_flash = text;
    m_flashing = m_environment.mainQueue.startTimer(flashTime, MainQueue::Repeat::once, [this] {
        m_flashing.reset();
        m_flash.clear();
        publish();
    });
    publish();
    // Few panels show a changed tool tip while the wheel is being turned.
    if (m_environment.session.windows == TraySession::Windows::x11)
        QToolTip::showText(QCursor::pos(), shownLine(text), nullptr, {}, static_cast<int>(flashTime.count()));
}

StatusNotifierContent TrayStatusItem::content() const {
    const bool isFlashing = !m_flash.isEmpty();
    StatusNotifierContent content;
    content.title = shownLine(isFlashing ? m_flash : m_title);
    content.label = shownLine(m_title, maxLabelCharacters);
    if (isFlashing) {
        // As wide as before, or the item would shrink away from under the pointer whose wheel is being
        // turned.
        const auto width = content.label.size();
        content.label = shownLine(m_flash, maxLabelCharacters).leftJustified(width, figureSpace);
    }
    if (m_iconSource == TrayIconSource::themeOrPixmaps)
        content.iconName = themeIconName(m_symbolName);
    content.symbolName = m_symbolName;
    content.iconAccessibleDescription = shownLine(m_description);
    content.toolTip = shownLines(isFlashing ? m_flash + QLatin1Char('\n') + m_toolTip : m_toolTip);
    return content;
}

void TrayStatusItem::publish() {
    if (m_item)
        m_item->setContent(content());
    if (m_xembed) {
        QIcon icon;
        for (const int pixels : std::array{16, 22, 24, 32, 48})
            icon.addPixmap(QPixmap::fromImage(withEdge(m_environment.icons, m_symbolName, pixels)));
        m_xembed->setIcon(icon);
        m_xembed->setToolTip(content().toolTip);
    }
}

double TrayStatusItem::height() const {
    return m_xembed ? m_xembed->geometry().height() : 0.0;
}

void TrayStatusItem::popUpMenu(const Menu& menu, QPointF location) {
    if (m_environment.session.windows != TraySession::Windows::x11) {
        // There a menu without a window below it would be placed like a window; the panel of our own does not
        // mind.
        if (onSecondaryActivate)
            onSecondaryActivate();
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

QString TrayStatusItem::themeIconName(const QString& symbolName) const {
    const QString name = standardIconName(symbolName);
    // Panels of the GTK kind draw symbolic icons in the colour of their text.
    const bool symbolic = m_way == StatusNotifierObject::Way::hostmenu && !name.isEmpty();
    return symbolic ? name + QLatin1String("-symbolic") : name;
}

QVariantMap TrayStatusItem::iconProperties(const QString& symbolName) const {
    const QString name = themeIconName(symbolName);
    return name.isEmpty() ? QVariantMap() : QVariantMap{{QStringLiteral("icon-name"), name}};
}

QList<BusPixmap> TrayStatusItem::pixmaps(const QString& symbolName) {
    if (m_pixmapsSymbol == symbolName)
        return m_pixmaps;
    m_pixmaps.clear();
    m_pixmapsSymbol = symbolName;
    for (const int pixels : std::array{22, 32, 48}) {
        const QImage image = withEdge(m_environment.icons, symbolName, pixels);
        if (!image.isNull())
            m_pixmaps.append(BusPixmap::fromImage(image));
    }
    return m_pixmaps;
}

} // namespace zofra
