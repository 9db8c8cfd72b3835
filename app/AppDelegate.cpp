// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "app/VolumePercent.h"
#include "platform/ForeignText.h"
#include "stations/texts/InterfaceTexts.h"

#include <QUrl>

#include <algorithm>
#include <cmath>
#include <utility>

namespace zofra {

namespace {

AppDelegate* s_shared = nullptr;

const QString& playingSymbol() {
    static const QString name = QStringLiteral("speaker.wave.2.fill");
    return name;
}

const QString& pausedSymbol() {
    static const QString name = QStringLiteral("play.fill");
    return name;
}

QString textOr(const QVariantMap& bundle, const QString& key, const QString& fallback) {
    const QVariant value = bundle.value(key);
    return value.typeId() == QMetaType::QString ? value.toString() : fallback;
}

std::unique_ptr<RadioViewModel> makeViewModel(const AppDelegate::Environment& environment) {
    const RadioStation station = RadioStation::savedStation(environment.defaults);
    return std::make_unique<RadioViewModel>(
        station, environment.session, environment.clock, environment.makeWebSocket,
        RadioViewModel::Environment{environment.mainQueue, environment.output, environment.languages(),
                                    environment.hosts});
}

} // namespace

QString versionText(const QVariantMap& bundle) {
    return textOr(bundle, QStringLiteral("CFBundleShortVersionString"), QStringLiteral("1.0")) +
           QStringLiteral(" (Build ") +
           textOr(bundle, QStringLiteral("CFBundleVersion"), QStringLiteral("1")) + QLatin1Char(')');
}

AppDelegate::AppDelegate(Environment environment)
    : m_environment(std::move(environment))
    , m_viewModel(makeViewModel(m_environment))
    , m_player(m_environment.player())
    , m_sonos(m_environment.sonos())
    , m_languages(m_environment.languages())
    , m_currentSongText(texts::loading.in(m_languages.currentLanguage())) {}

AppDelegate::~AppDelegate() {
    if (s_shared == this)
        s_shared = nullptr;
}

AppDelegate* AppDelegate::shared() {
    return s_shared;
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
    m_statusItem->onUnavailable = [this] { showAboutWindow(); };
    if (StatusItemButton* button = m_statusItem->button()) {
        button->setAction([this](std::optional<ButtonEvent> event) { statusBarButtonClicked(event); });
        button->sendActionOn(static_cast<unsigned>(ButtonEvent::leftMouseUp) |
                             static_cast<unsigned>(ButtonEvent::rightMouseUp));
    }
}

std::function<void()> AppDelegate::onMainQueue(std::function<void()> work) {
    return [&queue = m_environment.mainQueue, alive = std::weak_ptr(m_alive), work = std::move(work)] {
        queue.async([alive, work] {
            if (!alive.expired())
                work();
        });
    };
}

template<typename Work>
auto AppDelegate::whileAlive(Work work) const {
    return [alive = std::weak_ptr(m_alive), work = std::move(work)](auto&&... arguments) {
        if (!alive.expired())
            work(std::forward<decltype(arguments)>(arguments)...);
    };
}

void AppDelegate::installCallbacks() {
    const auto refresh = onMainQueue([this] { updateStatusBarButton(); });
    m_languages.onLanguageChanged = onMainQueue([this] {
        if (m_viewModel->isLoading())
            m_currentSongText = texts::loading.in(m_languages.currentLanguage());
        updateStatusBarButton();
    });
    m_player.onPlaybackStateChanged = [refresh](bool) { refresh(); };
    m_player.onStationChanged = [this, alive = std::weak_ptr(m_alive)](RadioStation station) {
        if (alive.expired())
            return;
        onMainQueue([this, station] {
            m_sonos.setStation(station);
            m_viewModel->setStation(station);
            updateStatusBarButton();
        })();
    };
    m_sonos.onPlaybackStateChanged = [refresh](bool) { refresh(); };
    m_sonos.onRoomsUpdated = [refresh](const QList<SonosRoom>&) { refresh(); };
    m_viewModel->onUpdate = whileAlive([this](const QString& current, const std::optional<QString>& next) {
        m_currentSongText = current;
        m_nextSongText = next;
        updateStatusBarButton();
        m_player.updateNowPlayingInfo(current, std::nullopt);
    });
}

void AppDelegate::statusBarButtonClicked(std::optional<ButtonEvent> currentEvent) {
    if (currentEvent == ButtonEvent::rightMouseUp)
        showAboutWindow();
    else
        showContextMenu();
}

void AppDelegate::showContextMenu() {
    StatusItemButton* button = m_statusItem ? m_statusItem->button() : nullptr;
    if (button)
        button->popUpMenu(contextMenu(), QPointF(0, button->height() + 4.0));
}

Menu AppDelegate::contextMenu() {
    return statusMenu(menuState(), m_languages, menuActions());
}

bool AppDelegate::validateMenuItem(const MenuItem& item) const {
    Q_UNUSED(item)
    return true;
}

void AppDelegate::togglePlayRadio() {
    m_sonos.togglePlayPause();
    updateStatusBarButton();
}

void AppDelegate::selectStationFromMenuItem(const MenuItem& sender) {
    if (const auto* station = std::any_cast<RadioStation>(&sender.representedObject))
        selectStation(*station);
}

void AppDelegate::selectStation(RadioStation station) {
    m_player.setStation(station);
    m_sonos.setStation(station);
    m_viewModel->setStation(station);
    updateStatusBarButton();
}

void AppDelegate::selectOutputMac() {
    m_sonos.activeTarget = AudioOutputTarget::localMac();
    m_sonos.stopAllSonos();
    m_sonos.isSonosPlaying = false;
    if (m_sonos.onPlaybackStateChanged)
        m_sonos.onPlaybackStateChanged(false);
    updateStatusBarButton();
}

void AppDelegate::selectOutputSonos(const MenuItem& sender) {
    if (const auto* room = std::any_cast<SonosRoom>(&sender.representedObject))
        selectOutput(*room);
}

void AppDelegate::selectOutput(const SonosRoom& room) {
    // The room may be one of the manager's own list, which playing can replace.
    const auto target = AudioOutputTarget::sonos(room.id());
    m_sonos.activeTarget = target;
    m_player.stop();
    m_sonos.playZofra(target.roomId());
    updateStatusBarButton();
}

void AppDelegate::selectOutputEverywhere() {
    m_sonos.selectTarget(AudioOutputTarget::sonosEverywhere());
    updateStatusBarButton();
}

void AppDelegate::rescanSonos() {
    m_sonos.discoverDevices(true);
}

void AppDelegate::openLocalNetworkSettings() {
    const QUrl url(
        QStringLiteral("x-apple.systempreferences:com.apple.preference.security?Privacy_LocalNetwork"));
    if (url.isValid())
        m_environment.workspace.open(url);
}

void AppDelegate::setVolumeFromMenuItem(const MenuItem& sender) {
    if (const auto* value = std::any_cast<float>(&sender.representedObject))
        chooseVolume(*value);
}

void AppDelegate::chooseVolume(float value) {
    m_player.applyVolume(value);
    const auto percent = volumePercent(value);
    if (!percent)
        qFatal("A volume of %f has no percentage", static_cast<double>(value));
    const AudioOutputTarget target = m_sonos.activeTarget;
    switch (target.kind()) {
    case AudioOutputTarget::Kind::localMac:
        break;
    case AudioOutputTarget::Kind::sonosEverywhere:
        m_sonos.setVolumeEverywhere(*percent);
        break;
    case AudioOutputTarget::Kind::sonos:
        if (const auto room = m_sonos.room(target.roomId()))
            m_sonos.setVolume(*percent, *room);
        break;
    }
}

void AppDelegate::setVolume(float value) {
    if (!std::isnan(value))
        chooseVolume(std::clamp(value, 0.0F, 1.0F));
}

void AppDelegate::scrollVolume(int steps) {
    constexpr int percentPerStep = 5;
    const int percent =
        std::clamp(shownVolumePercent(m_player.volume) + std::clamp(steps, -20, 20) * percentPerStep, 0, 100);
    chooseVolume(volumeOfPercent(percent));
    if (m_statusItem)
        m_statusItem->flashVolume(percent, m_languages.volumeMenuTitle(percent));
}

void AppDelegate::showAboutWindow() {
    onMainQueue([this] { openAboutWindow(); })();
}

void AppDelegate::openAboutWindow() {
    if (m_aboutWindow) {
        m_aboutWindow->makeKeyAndOrderFront();
        m_environment.application.activate(Application::Others::ignore);
        return;
    }
    auto window = m_environment.windows.makeWindow(PopupPanelContent{
        versionText(m_environment.bundle), *m_viewModel, whileAlive([this] { closeAboutWindow(); }), m_player,
        m_sonos, m_languages, whileAlive([this] { updateStatusBarButton(); })});
    if (!window)
        return;
    window->setTitle(QStringLiteral("Zofra Zofra"));
    window->setStyle(static_cast<unsigned>(WindowStyle::titled) |
                     static_cast<unsigned>(WindowStyle::closable));
    window->onWillClose = whileAlive([this](const PopupWindow& closing) { windowWillClose(closing); });
    window->center();
    m_aboutWindow = std::move(window);
    m_environment.application.activate(Application::Others::ignore);
    m_aboutWindow->makeKeyAndOrderFront();
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

void AppDelegate::quit() {
    m_player.drop();
    m_sonos.stopAllSonos();
    m_environment.application.terminate();
}

bool AppDelegate::isPlaying() const {
    return m_sonos.activeTarget.get() == AudioOutputTarget::localMac() ? m_player.isPlaying
                                                                       : m_sonos.isSonosPlaying;
}

void AppDelegate::updateStatusBarButton() {
    StatusItemButton* button = m_statusItem ? m_statusItem->button() : nullptr;
    if (!button)
        return;
    button->setTitle(m_player.currentStation.get().displayName() + QStringLiteral(": ") + m_currentSongText);
    button->setImagePosition(ImagePosition::leading);
    button->setImage(isPlaying() ? playingSymbol() : pausedSymbol(), statusWord());
    button->setToolTip(toolTip());
}

QString AppDelegate::statusWord() const {
    return (isPlaying() ? texts::playing : texts::paused).in(m_languages.currentLanguage());
}

QString AppDelegate::toolTip() const {
    const RadioStation station = m_player.currentStation;
    QStringList lines{m_languages.tooltipStation(station.displayName(), station.genre()),
                      m_languages.nowPlayingHeader(withoutLineBreaks(m_currentSongText))};
    if (m_nextSongText && !m_nextSongText->isEmpty())
        lines.append(m_languages.upNextHeader(withoutLineBreaks(*m_nextSongText)));
    lines.append(m_languages.tooltipOutput(m_sonos.activeTargetTitle()));
    lines.append(m_languages.tooltipStatus(isPlaying()));
    return lines.join(QLatin1Char('\n'));
}

StatusMenuState AppDelegate::menuState() const {
    StatusMenuState state;
    state.isPlaying = isPlaying();
    state.currentStation = m_player.currentStation;
    state.currentSongText = m_currentSongText;
    state.nextSongText = m_nextSongText;
    state.activeTarget = m_sonos.activeTarget;
    state.activeTargetTitle = m_sonos.activeTargetTitle();
    for (const SonosRoom& room : m_sonos.rooms.get())
        state.rooms.push_back({room, m_sonos.displayTitle(room)});
    state.emptyStateMessage = m_sonos.emptyStateMessage();
    state.localNetworkDenied = m_sonos.localNetworkDenied;
    state.volume = m_player.volume;
    return state;
}

StatusMenuActions AppDelegate::menuActions() {
    StatusMenuActions actions;
    actions.togglePlayRadio = whileAlive([this](const MenuItem&) { togglePlayRadio(); });
    actions.selectStationFromMenuItem =
        whileAlive([this](const MenuItem& item) { selectStationFromMenuItem(item); });
    actions.selectOutputMac = whileAlive([this](const MenuItem&) { selectOutputMac(); });
    actions.selectOutputSonos = whileAlive([this](const MenuItem& item) { selectOutputSonos(item); });
    actions.selectOutputEverywhere = whileAlive([this](const MenuItem&) { selectOutputEverywhere(); });
    actions.openLocalNetworkSettings = whileAlive([this](const MenuItem&) { openLocalNetworkSettings(); });
    actions.rescanSonos = whileAlive([this](const MenuItem&) { rescanSonos(); });
    actions.setVolumeFromMenuItem = whileAlive([this](const MenuItem& item) { setVolumeFromMenuItem(item); });
    actions.showAboutWindow = whileAlive([this](const MenuItem&) { showAboutWindow(); });
    actions.quit = whileAlive([this](const MenuItem&) { quit(); });
    return actions;
}

} // namespace zofra
