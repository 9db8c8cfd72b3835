// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ZofraMenuBarApp.h"

#include "app/Desktop.h"
#include "app/RemoteOptions.h"
#include "platform/JsonRecord.h"
#include "platform/SharedInstance.h"
#include "platform/linux/PreferredLanguages.h"
#include "platform/linux/XdgFolders.h"

#include <QCoreApplication>

#include <utility>

namespace zofra {

namespace {

constexpr auto endLimit = std::chrono::milliseconds(1000);
constexpr auto answerLimit = std::chrono::seconds(25);
/// A player that was told to play may take as long as its request to answer, and is stopped only then.
constexpr auto endLimitDuringStart = std::chrono::milliseconds(6000);
constexpr auto endLook = std::chrono::milliseconds(50);
constexpr auto startupSettled = std::chrono::milliseconds(3000);
constexpr auto settingsLimit = std::chrono::milliseconds(500);

/// The stations as media displays and searches of desktops list them.
std::vector<MprisPlaylists::Entry> playlists() {
    std::vector<MprisPlaylists::Entry> entries;
    entries.reserve(RadioStation::allCases.size());
    for (const RadioStation station : RadioStation::allCases)
        entries.push_back({station.rawValue(), station.displayName()});
    return entries;
}
std::vector<SearchProvider::Entry> searchEntries() {
    std::vector<SearchProvider::Entry> entries;
    entries.reserve(RadioStation::allCases.size());
    for (const RadioStation station : RadioStation::allCases)
        entries.push_back({station.rawValue(), station.displayName(), station.genre()});
    return entries;
}

/// What an action of the desktop file stands for: "play-" and a station, with hyphens for underscores.
std::optional<RadioStation> stationOfAction(const QString& action) {
    const QLatin1String prefix("play-");
    if (!action.startsWith(prefix))
        return std::nullopt;
    return RadioStation::fromRawValue(action.mid(prefix.size()).replace(u'-', u'_'));
}

} // namespace

/// The program as the desktop sees it, and its end: once the speakers have heard that they shall stop and the
/// buses what was last said on them, within a second; a room that is just being started may take longer.
class ZofraMenuBarApp::Ending final : public Application {
public:
    explicit Ending(ZofraMenuBarApp& program)
        : m_program(program) {}

    // Windows ask for the keyboard themselves when they are shown.
    void activate(Others) override {}

    void terminate() override {
        if (m_limit)
            return;
        m_program.m_desktop->hideEverything();
        const auto limit = SonosManager::shared().mayStillStart() ? endLimitDuringStart : endLimit;
        m_limit = m_program.m_mainQueue.startTimer(limit, MainQueue::Repeat::once, [] { leave(); });
        // Who asked for the end may have more to say, a panel for instance that it has closed the menu.
        m_look =
            m_program.m_mainQueue.startTimer(endLook, MainQueue::Repeat::forever, [this] { leaveIfDone(); });
    }

private:
    void leaveIfDone() {
        if (m_program.m_session.underWay() > 0)
            return;
        m_look.reset();
        // Messages leave in their order: when this is answered, those before it are out.
        m_program.m_sessionBus.askHealth(endLimit, [](SessionBus::Health) { leave(); });
    }
    static void leave() { QCoreApplication::exit(0); }

    ZofraMenuBarApp& m_program;
    std::unique_ptr<Timer> m_look;
    std::unique_ptr<Timer> m_limit;
};

ZofraMenuBarApp::ZofraMenuBarApp(Configuration configuration, QtMainQueue& mainQueue, SessionBus& sessionBus,
                                 ApplicationBus& applicationBus)
    : m_configuration(std::move(configuration))
    , m_mainQueue(mainQueue)
    , m_sessionBus(sessionBus)
    , m_applicationBus(applicationBus)
    , m_systemBus(SessionBus::Kind::system, m_mainQueue)
    , m_defaults(IniDefaultsStore::defaultPath(), m_tasks, IniDefaultsStore::reportTo(m_systemLog),
                 {.ranges = {{u"zofra_radio_volume"_qs, 0.0F, 1.0F}}})
    , m_http(m_configuration.hosts.extraAuthorityFile())
    , m_session(m_http)
    , m_wake(m_systemBus)
    , m_networkChange(m_mainQueue)
    , m_media(m_sessionBus)
    , m_search(m_sessionBus, searchEntries())
    , m_streams(m_mainQueue, m_systemLog, {m_configuration.hosts.extraAuthorityFile()})
    , m_workspace(m_sessionBus)
    , m_inhibitor(m_systemBus)
    , m_notifications(m_sessionBus)
    , m_historyFile(historyPath(), SongHistory::maxBytes, m_tasks, m_systemLog)
    , m_songLog(m_historyFile, m_defaults, systemClock())
    , m_songNotifier(m_notifications, m_defaults, [this] { return m_delegate->aboutWindow() != nullptr; }) {
    prepareSharedInstances();
    const auto itemChanged = [this] {
        if (m_delegate)
            m_delegate->state().touch();
    };
    m_desktop =
        m_configuration.options.headless
            ? makeNoDesktop()
            : makeDesktop({m_sessionBus, m_mainQueue, m_defaults, m_output, m_workspace, itemChanged});
    m_desktop->setActivationToken(m_configuration.activation.activationToken.toUtf8());
    m_application = std::make_unique<Ending>(*this);
}

QVariantMap ZofraMenuBarApp::bundle() {
    return {{u"CFBundleShortVersionString"_qs, QStringLiteral(ZOFRA_VERSION)},
            {u"CFBundleVersion"_qs, QStringLiteral(ZOFRA_BUILD_NUMBER)}};
}

QString ZofraMenuBarApp::historyPath() {
    return xdg::stateHome() + u"/zofrazofra/history.json"_qs;
}

void ZofraMenuBarApp::prepareSharedInstances() {
    SharedInstance<LanguageManager>::setMake(
        [this] { return std::make_unique<LanguageManager>(m_defaults, preferredLanguages()); });
    SharedInstance<RadioPlayer>::setMake([this] {
        return std::make_unique<RadioPlayer>(RadioPlayer::Environment{
            m_streams, m_defaults, m_mainQueue, m_media, m_media, m_wake, m_output, m_configuration.hosts});
    });
    SharedInstance<SonosManager>::setMake([this] {
        return std::make_unique<SonosManager>(
            !m_configuration.options.noDiscovery,
            SonosManager::Environment{{m_session, m_mainQueue, m_tasks, m_network, m_systemLog},
                                      m_defaults,
                                      LanguageManager::shared(),
                                      RadioPlayer::shared(),
                                      m_configuration.hosts});
    });
}

AppDelegate::Environment ZofraMenuBarApp::delegateEnvironment() {
    return {m_defaults,
            m_mainQueue,
            m_output,
            m_configuration.hosts,
            m_session,
            systemClock(),
            m_http.webSockets(),
            m_desktop->statusBar(),
            m_desktop->windows(),
            *m_application,
            m_workspace,
            bundle(),
            []() -> LanguageManager& { return LanguageManager::shared(); },
            []() -> RadioPlayer& { return RadioPlayer::shared(); },
            []() -> SonosManager& { return SonosManager::shared(); }};
}

int ZofraMenuBarApp::run() {
    m_delegate = std::make_unique<AppDelegate>(delegateEnvironment());
    m_signals = std::make_unique<UnixSignals>([this] { m_delegate->quit(); });
    connectApplicationBus();
    connectMediaControls();
    connectChanges();
    m_delegate->applicationDidFinishLaunching();
    m_commands = std::make_unique<CommandRunner>(
        CommandRunner::Environment{m_delegate->controls(), m_delegate->state(), m_mainQueue});
    m_commands->runAtStart(m_configuration.options, writeErrorLine);
    m_delegate->state().touch();
    m_mainQueue.asyncAfter(startupSettled, [this] {
        // Making the first widget waits for the bus.
        m_sessionBus.askHealth(answerLimit, [this](SessionBus::Health health) {
            if (health == SessionBus::Health::answers)
                prepare();
        });
    });
    const int status = QCoreApplication::exec();
    finish();
    return status;
}

void ZofraMenuBarApp::prepare() {
    const PopupPanelContent content{versionText(bundle()), m_delegate->objects(), [] {},
                                    m_delegate->controls()};
    runIdleSteps(m_mainQueue, m_desktop->preparation(content, m_delegate->contextMenu()));
}

void ZofraMenuBarApp::connectApplicationBus() {
    m_applicationBus.onActivate = [this](const Activation& activation) { raise(activation); };
    m_applicationBus.onOpen = [this](const QStringList&, const Activation& activation) { raise(activation); };
    m_applicationBus.onActivateAction = [this](const QString& action, const QVariantList&,
                                               const Activation&) {
        if (action == u"quit")
            m_delegate->quit();
        else if (action == u"play")
            play(std::nullopt);
        else if (const auto station = stationOfAction(action))
            play(station);
    };
    m_search.onChosen = [this](const QString& id) { play(RadioStation::fromRawValue(id)); };
    m_search.onShow = [this] { m_delegate->showAboutWindow(); };
    m_applicationBus.onAnotherIsRunning = [this] { stepBack(); };
    m_applicationBus.onRun = [this](const QVariantMap& options) { return runRequest(options); };
    m_applicationBus.onStatus = [this] {
        return compactJson(toJson(m_delegate->state().now(), versionText(bundle()), systemClock()()));
    };
    m_applicationBus.onBarLine = [this] {
        return compactJson(barLine(m_delegate->state().now(), LanguageManager::shared()));
    };
}

void ZofraMenuBarApp::play(std::optional<RadioStation> station) {
    Options options;
    options.playback = Options::Playback::play;
    options.station = station;
    static_cast<void>(m_commands->run(options));
}

void ZofraMenuBarApp::stepBack() {
    Options options;
    if (!m_applicationBus.hasBeenRunning()) {
        // What only a first start understands has had its effect.
        options = m_configuration.options;
        options.endpointsFile.reset();
        options.noDiscovery = false;
        options.headless = false;
    } else if (m_delegate->isPlaying()) {
        const AudioOutputTarget target = m_delegate->state().now().target;
        options.playback = Options::Playback::play;
        if (target == AudioOutputTarget::sonosEverywhere())
            options.output = u"everywhere"_qs;
        else if (target != AudioOutputTarget::localMac())
            options.output = target.roomId();
    }
    // What plays in rooms is the other's now: nothing is stopped there.
    m_applicationBus.handOver(toVariantMap(options), m_configuration.activation,
                              [this] { m_application->terminate(); });
}

RunReply ZofraMenuBarApp::runRequest(const QVariantMap& map) {
    const auto request = fromVariantMap(map);
    if (!request)
        return {2, request.error()};
    if (request->task == Options::Task::quit)
        m_delegate->quit();
    else if (const auto refusal = m_commands->run(*request))
        return {1, *refusal};
    return {};
}

void ZofraMenuBarApp::raise(const Activation& activation) {
    m_desktop->setActivationToken(
        (activation.activationToken.isEmpty() ? activation.desktopStartupId : activation.activationToken)
            .toUtf8());
    m_delegate->showAboutWindow();
}

void ZofraMenuBarApp::connectMediaControls() {
    m_media.onVolumeRequested = [this](double volume) { m_delegate->controls().requestVolume(volume); };
    m_media.setStations(playlists());
    m_media.onStationRequested = [this](const QString& key) {
        if (const auto station = RadioStation::fromRawValue(key))
            m_delegate->controls().chooseStation(*station);
    };
    m_media.onPlayStationRequested = [this](const QString& key) { play(RadioStation::fromRawValue(key)); };
    m_media.onQuit = [this] { m_delegate->quit(); };
    if (!m_configuration.options.headless)
        m_media.onRaise = [this] { m_delegate->showAboutWindow(); };
    showMedia(m_delegate->state().now());
}

void ZofraMenuBarApp::connectChanges() {
    m_observations.push_back(m_delegate->state().observe([this](const RadioState& state) { show(state); }));
    // Connections kept from before are dead; streams that wait for their next try need not wait any longer.
    const auto startAfresh = [this] {
        m_http.dropKeptConnections();
        m_streams.tryNow();
    };
    m_observations.push_back(m_wake.observeDidWake(startAfresh));
    m_observations.push_back(m_networkChange.observeChanged(startAfresh));
}

void ZofraMenuBarApp::showMedia(const RadioState& state) {
    using Here = RadioState::LocalPlayback;
    using Shown = MprisPlayer::PlaybackState;
    m_media.setPlaybackState(state.localPlayback == Here::playing  ? Shown::playing
                             : state.localPlayback == Here::paused ? Shown::paused
                                                                   : Shown::stopped);
    m_media.setVolume(static_cast<double>(state.volume));
    m_media.setStation(state.station.rawValue(), state.station.displayName());
}

void ZofraMenuBarApp::show(const RadioState& state) {
    showMedia(state);
    if (StatusItem* item = m_delegate->statusItem()) {
        item->setBuffering(state.isBuffering);
        item->menuDidChange();
    }
    writeChangeLines(state);
    m_applicationBus.tellChanges();
    m_songLog.show(state);
    m_songNotifier.show(state);
    m_inhibitor.setInhibited(state.localPlayback == RadioState::LocalPlayback::playing &&
                             isOn(m_defaults, inhibitIdleKey, false));
}

void ZofraMenuBarApp::writeChangeLines(const RadioState& state) {
    if (!m_configuration.options.headless)
        return;
    for (const QString& line : m_lines.update(state))
        m_output.writeLine(line);
}

void ZofraMenuBarApp::finish() {
    writeChangeLines(m_delegate->state().now());
    // What was chosen last must not be lost; the files are small.
    if (!m_defaults.flush(settingsLimit))
        writeErrorLine(u"not every setting could be kept"_qs);
}

} // namespace zofra
