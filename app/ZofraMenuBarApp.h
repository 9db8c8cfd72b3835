// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/AppDelegate.h"
#include "app/CommandRunner.h"
#include "app/ControlRequestCount.h"
#include "app/Options.h"
#include "app/SongHistory.h"
#include "app/SongNotifier.h"
#include "app/StatusReport.h"
#include "app/UnixSignals.h"
#include "platform/linux/ApplicationBus.h"
#include "platform/linux/DesktopNotifications.h"
#include "platform/linux/DesktopWorkspace.h"
#include "platform/linux/IniDefaultsStore.h"
#include "platform/linux/LogindInhibitor.h"
#include "platform/linux/LogindWake.h"
#include "platform/linux/MprisPlayer.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/SearchProvider.h"
#include "platform/linux/SessionBus.h"
#include "platform/linux/StandardOutputWriter.h"
#include "platform/linux/StateFile.h"
#include "platform/linux/SyslogLog.h"
#include "platform/linux/ThreadTaskPool.h"
#include "platform/linux/audio/MpvStreamPlayerFactory.h"
#include "platform/linux/lan/LinuxLocalNetwork.h"
#include "platform/linux/lan/NetworkChange.h"
#include "platform/linux/net/CurlHttpSession.h"

#include <memory>
#include <optional>

namespace zofra {

class Desktop;

/// The running program: makes the real parts of the platform, hands them to the core, and connects both to
/// the buses. One for each process; what it holds is never destroyed, for threads of the parts may still be
/// at work when the program ends. Main thread only.
class ZofraMenuBarApp {
public:
    struct Configuration {
        Options options;
        ServiceHosts hosts;
        /// What the desktop handed over with the start.
        Activation activation;
    };

    /// `sessionBus` and `mainQueue` outlive it. `applicationBus` is ours already, or there is no bus.
    ZofraMenuBarApp(Configuration configuration, QtMainQueue& mainQueue, SessionBus& sessionBus,
                    ApplicationBus& applicationBus);
    ZofraMenuBarApp(const ZofraMenuBarApp&) = delete;
    ZofraMenuBarApp& operator=(const ZofraMenuBarApp&) = delete;

    /// The program's description: its version and build number.
    [[nodiscard]] static QVariantMap bundle();
    /// Where the songs that were played are kept.
    [[nodiscard]] static QString historyPath();

    /// Launches and runs until the program is asked to end. Returns its exit status.
    [[nodiscard]] int run();

private:
    class Ending;

    void prepareSharedInstances();
    [[nodiscard]] AppDelegate::Environment delegateEnvironment();
    void prepare();
    void connectMediaControls();
    void connectApplicationBus();
    void connectChanges();
    /// As a second start asks for it.
    void play(std::optional<RadioStation> station);
    /// Another has become the one running program: hands over what plays, or was asked for, and ends.
    void stepBack();
    [[nodiscard]] RunReply runRequest(const QVariantMap& options);
    void raise(const Activation& activation);
    void show(const RadioState& state);
    void showMedia(const RadioState& state);
    void writeChangeLines(const RadioState& state);
    void finish();

    Configuration m_configuration;
    QtMainQueue& m_mainQueue;
    SessionBus& m_sessionBus;
    ApplicationBus& m_applicationBus;
    SessionBus m_systemBus;
    ThreadTaskPool m_tasks{m_mainQueue};
    SyslogLog m_systemLog;
    StandardOutputWriter m_output;
    IniDefaultsStore m_defaults;
    CurlHttpSession m_http;
    ControlRequestCount m_session;
    LinuxLocalNetwork m_network;
    LogindWake m_wake;
    NetworkChange m_networkChange;
    MprisPlayer m_media;
    SearchProvider m_search;
    MpvStreamPlayerFactory m_streams;
    DesktopWorkspace m_workspace;
    LogindInhibitor m_inhibitor;
    DesktopNotifications m_notifications;
    StateFile m_historyFile;
    SongLog m_songLog;
    SongNotifier m_songNotifier;
    std::unique_ptr<Desktop> m_desktop;
    std::unique_ptr<Application> m_application;
    std::unique_ptr<AppDelegate> m_delegate;
    std::unique_ptr<CommandRunner> m_commands;
    std::unique_ptr<UnixSignals> m_signals;
    ChangeLines m_lines;
    std::vector<ObservationToken> m_observations;
};

} // namespace zofra
