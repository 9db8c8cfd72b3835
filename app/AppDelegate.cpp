// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/StatusReport.h"
#include "app/VolumePercent.h"
#include "stations/texts/InterfaceTexts.h"

#include <algorithm>
#include <utility>

namespace zofra {

namespace {

std::unique_ptr<RadioViewModel> makeViewModel(const AppDelegate::Environment& environment) {
    // Read before the shared instances are made.
    const RadioStation station = RadioStation::savedStation(environment.defaults);
    return std::make_unique<RadioViewModel>(
        station, environment.session, environment.clock, environment.makeWebSocket,
        RadioViewModel::Environment{environment.mainQueue, environment.output, environment.languages(),
                                    environment.hosts});
}

} // namespace

QString versionText(const QVariantMap& bundle) {
    const auto text = [&](const QString& key, const QString& otherwise) {
        const QVariant value = bundle.value(key);
        return value.typeId() == QMetaType::QString ? value.toString() : otherwise;
    };
    return u"%1 (Build %2)"_qs.arg(text(u"CFBundleShortVersionString"_qs, u"1.0"_qs),
                                   text(u"CFBundleVersion"_qs, u"1"_qs));
}

AppDelegate::AppDelegate(Environment environment)
    : m_environment(std::move(environment))
    , m_viewModel(makeViewModel(m_environment))
    , m_player(m_environment.player())
    , m_sonos(m_environment.sonos())
    , m_languages(m_environment.languages())
    , m_currentSongText(texts::loading.in(m_languages.currentLanguage()))
    , m_state(m_environment.mainQueue, objects(), [this](RadioState& state) { completeState(state); })
    , m_controls(objects(), shell()) {}

AppDelegate::~AppDelegate() {
    if (s_shared == this)
        s_shared = nullptr;
}

void AppDelegate::applicationDidFinishLaunching() {
    s_shared = this;
    installStatusItem();
    updateStatusBarButton();
    installCallbacks();
    m_viewModel->startWebSocket();
    m_viewModel->startPolling();
    m_viewModel->fetchMetadata();
}

void AppDelegate::installStatusItem() {
    m_statusItem = m_environment.statusBar.statusItem(StatusBar::variableLength);
    if (!m_statusItem)
        return;
    m_statusItem->menuProvider = [this] { return contextMenu(); };
    m_statusItem->onScroll = [this](int steps) { scrollVolume(steps); };
    m_statusItem->onSecondaryActivate = [this] { showAboutWindow(); };
    m_statusItem->onUnavailable = [this] { onMainQueue([this] { openAboutWindow(Asked::byNobody); })(); };
    m_statusItem->onAvailable = [this] { withdrawAboutWindow(); };
    if (StatusItemButton* button = m_statusItem->button()) {
        button->setAction([this](std::optional<ButtonEvent> event) { statusBarButtonClicked(event); });
        button->sendActionOn(static_cast<unsigned>(ButtonEvent::leftMouseUp) |
                             static_cast<unsigned>(ButtonEvent::rightMouseUp));
    }
}

void AppDelegate::completeState(RadioState& state) const {
    state.currentSong = m_currentSongText;
    state.nextSong = m_nextSongText;
    state.stopsAt = m_controls.stopsAt();
    if (m_statusItem)
        state.tray = m_statusItem->mode();
}

RadioControls::Shell AppDelegate::shell() {
    return {m_environment.mainQueue,
            m_environment.clock,
            m_environment.defaults,
            m_environment.workspace,
            [this] {
                m_state.touch();
                updateStatusBarButton();
            },
            [this] { showAboutWindow(); },
            [this] { m_environment.application.terminate(); }};
}

std::function<void()> AppDelegate::onMainQueue(std::function<void()> work) {
    return [&queue = m_environment.mainQueue, guarded = m_lifetime.guard(std::move(work))] {
        queue.async(guarded);
    };
}

void AppDelegate::installCallbacks() {
    const auto refresh = onMainQueue([this] { updateStatusBarButton(); });
    m_languages.onLanguageChanged = onMainQueue([this] {
        if (m_viewModel->isLoading())
            m_currentSongText = texts::loading.in(m_languages.currentLanguage());
        m_state.touch();
        updateStatusBarButton();
    });
    m_player.onPlaybackStateChanged = [refresh](bool) { refresh(); };
    m_player.onStationChanged = m_lifetime.guard([this](RadioStation station) {
        onMainQueue([this, station] {
            m_sonos.setStation(station);
            m_viewModel->setStation(station);
            updateStatusBarButton();
        })();
    });
    m_sonos.onPlaybackStateChanged = [refresh](bool) { refresh(); };
    m_sonos.onRoomsUpdated = [refresh](const QList<SonosRoom>&) { refresh(); };
    m_viewModel->onUpdate =
        m_lifetime.guard([this](const QString& current, const std::optional<QString>& next) {
            m_currentSongText = current;
            m_nextSongText = next;
            m_state.touch();
            updateStatusBarButton();
            m_player.updateNowPlayingInfo(current, std::nullopt);
        });
}

void AppDelegate::showContextMenu() {
    StatusItemButton* button = m_statusItem ? m_statusItem->button() : nullptr;
    if (button)
        button->popUpMenu(contextMenu(), QPointF(0, button->height() + 4.0));
}

void AppDelegate::selectStationFromMenuItem(const MenuItem& sender) {
    if (const auto* station = std::any_cast<RadioStation>(&sender.representedObject))
        m_controls.chooseStation(*station);
}

void AppDelegate::selectOutputSonos(const MenuItem& sender) {
    if (const auto* room = std::any_cast<SonosRoom>(&sender.representedObject))
        m_controls.chooseRoom(room->id());
}

void AppDelegate::setVolumeFromMenuItem(const MenuItem& sender) {
    const auto* value = std::any_cast<float>(&sender.representedObject);
    if (!value)
        return;
    m_controls.setVolume(*value);
    if (!volumePercent(*value))
        qFatal("A volume of %f has no percentage", static_cast<double>(*value));
}

void AppDelegate::scrollVolume(int steps) {
    const int percent = m_controls.changeVolume(std::clamp(steps, -20, 20) * RadioControls::volumeStep);
    if (m_statusItem)
        m_statusItem->flashVolume(percent, m_languages.volumeMenuTitle(percent));
}

void AppDelegate::openAboutWindow(Asked asked) {
    if (m_aboutWindow && asked == Asked::byNobody)
        return;
    m_isAboutWindowWanted = asked == Asked::byPerson;
    if (m_aboutWindow) {
        m_aboutWindow->makeKeyAndOrderFront();
        m_environment.application.activate(Application::Others::ignore);
        return;
    }
    auto window = m_environment.windows.makeWindow({versionText(m_environment.bundle), objects(),
                                                    m_lifetime.guard([this] { closeAboutWindow(); }),
                                                    m_controls, [this] { return contextMenu(); }});
    if (!window)
        return;
    window->setTitle(u"Zofra Zofra"_qs);
    window->setStyle(static_cast<unsigned>(WindowStyle::titled) |
                     static_cast<unsigned>(WindowStyle::closable));
    window->onWillClose = m_lifetime.guard([this](const PopupWindow& closing) { windowWillClose(closing); });
    window->center();
    m_aboutWindow = std::move(window);
    if (asked == Asked::byNobody) {
        m_aboutWindow->orderFront();
        return;
    }
    m_environment.application.activate(Application::Others::ignore);
    m_aboutWindow->makeKeyAndOrderFront();
}

void AppDelegate::withdrawAboutWindow() {
    if (m_aboutWindow && !m_isAboutWindowWanted && !m_aboutWindow->wasUsed())
        closeAboutWindow();
}

void AppDelegate::closeAboutWindow() {
    if (!m_aboutWindow)
        return;
    // Closing tells `windowWillClose`, which forgets the window.
    m_aboutWindow->close();
    forgetAboutWindow();
}

void AppDelegate::windowWillClose(const PopupWindow& closing) {
    if (&closing == m_aboutWindow.get())
        forgetAboutWindow();
}

void AppDelegate::forgetAboutWindow() {
    // The window itself is on the stack; it goes in a next turn.
    if (m_aboutWindow)
        m_environment.mainQueue.async([window = std::shared_ptr(std::move(m_aboutWindow))] {});
}

void AppDelegate::updateStatusBarButton() {
    StatusItemButton* button = m_statusItem ? m_statusItem->button() : nullptr;
    if (!button)
        return;
    const auto content = statusButtonContent(m_state.now(), m_languages);
    button->setTitle(content.title);
    button->setImagePosition(ImagePosition::leading);
    button->setImage(content.symbol, content.statusWord);
    button->setToolTip(content.toolTip);
}

StatusMenuActions AppDelegate::menuActions() {
    const auto act = [this](void (AppDelegate::*operation)()) {
        return m_lifetime.guard([this, operation](const MenuItem&) { (this->*operation)(); });
    };
    const auto actOn = [this](void (AppDelegate::*operation)(const MenuItem&)) {
        return m_lifetime.guard([this, operation](const MenuItem& item) { (this->*operation)(item); });
    };
    return {.togglePlayRadio = act(&AppDelegate::togglePlayRadio),
            .selectStationFromMenuItem = actOn(&AppDelegate::selectStationFromMenuItem),
            .selectOutputMac = act(&AppDelegate::selectOutputMac),
            .selectOutputSonos = actOn(&AppDelegate::selectOutputSonos),
            .selectOutputEverywhere = act(&AppDelegate::selectOutputEverywhere),
            .openLocalNetworkSettings = act(&AppDelegate::openLocalNetworkSettings),
            .rescanSonos = act(&AppDelegate::rescanSonos),
            .setVolumeFromMenuItem = actOn(&AppDelegate::setVolumeFromMenuItem),
            .showAboutWindow = act(&AppDelegate::showAboutWindow),
            .quit = act(&AppDelegate::quit)};
}

} // namespace zofra
