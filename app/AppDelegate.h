// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/PopupWindow.h"
#include "app/RadioControls.h"
#include "app/RadioStateSource.h"
#include "app/StatusMenu.h"
#include "metadata/RadioViewModel.h"
#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "platform/HttpSession.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/RadioMetadataSocket.h"
#include "platform/StatusItem.h"
#include "platform/SystemLog.h"
#include "platform/Workspace.h"
#include "playback/RadioPlayer.h"
#include "speakers/SonosManager.h"
#include "stations/LanguageManager.h"
#include "stations/ServiceHosts.h"

#include <QString>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <optional>

namespace zofra {

/// The running program as the desktop sees it. Main thread only.
class Application {
public:
    virtual ~Application() = default;
    enum class Others { respect, ignore };
    /// Makes this the program that has the keyboard.
    virtual void activate(Others otherApplications) = 0;
    /// Ends the program in a next turn of the main loop.
    virtual void terminate() = 0;
};

/// The spine of the program: owns the status item and the metadata model, wires player, speakers, languages
/// and metadata to one another, routes what the user chooses, and opens and closes the popup window. Main
/// thread only; what others tell it is carried to the main queue first.
class AppDelegate {
public:
    /// What the delegate needs from outside; all of it outlives the delegate.
    struct Environment {
        DefaultsStore& defaults;
        MainQueue& mainQueue;
        StandardOutput& output;
        const ServiceHosts& hosts;
        HttpSession& session;
        Clock clock;
        MakeWebSocket makeWebSocket;
        StatusBar& statusBar;
        PopupWindowFactory& windows;
        Application& application;
        Workspace& workspace;
        /// The bundle's description, with the keys CFBundleShortVersionString and CFBundleVersion.
        QVariantMap bundle;
        /// The shared instances, each made when it is first asked for.
        std::function<LanguageManager&()> languages;
        std::function<RadioPlayer&()> player;
        std::function<SonosManager&()> sonos;
    };

    explicit AppDelegate(Environment environment);
    ~AppDelegate();
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    /// The live delegate, once it has launched; null before and after.
    [[nodiscard]] static AppDelegate* shared() { return s_shared; }

    void applicationDidFinishLaunching();
    void statusBarButtonClicked(std::optional<ButtonEvent> currentEvent) {
        if (currentEvent == ButtonEvent::rightMouseUp)
            showAboutWindow();
        else
            showContextMenu();
    }
    void showContextMenu();
    /// The status-bar menu for the current state.
    [[nodiscard]] Menu contextMenu() { return statusMenu(m_state.now(), m_languages, menuActions()); }
    [[nodiscard]] bool validateMenuItem(const MenuItem&) const { return true; }

    void togglePlayRadio() { m_controls.toggle(); }
    void selectStationFromMenuItem(const MenuItem& sender);
    void selectOutputMac() { m_controls.chooseThisComputer(); }
    void selectOutputSonos(const MenuItem& sender);
    void selectOutputEverywhere() { m_controls.chooseEverywhere(); }
    void rescanSonos() { m_controls.search(); }
    void openLocalNetworkSettings() { m_controls.openLocalNetworkSettings(); }
    void setVolumeFromMenuItem(const MenuItem& sender);
    void showAboutWindow() {
        onMainQueue([this] { openAboutWindow(Asked::byPerson); })();
    }
    void windowWillClose(const PopupWindow& closing);
    void quit() { m_controls.quit(); }
    void updateStatusBarButton();

    /// Raises or lowers the volume by `steps` of five percent and shows it.
    void scrollVolume(int steps);

    /// Whether the current output plays, whatever it is.
    [[nodiscard]] bool isPlaying() const { return m_state.now().isPlaying; }
    [[nodiscard]] RadioStateSource& state() { return m_state; }
    [[nodiscard]] RadioControls& controls() { return m_controls; }
    [[nodiscard]] RadioViewModel& viewModel() { return *m_viewModel; }
    [[nodiscard]] RadioObjects objects() { return {*m_viewModel, m_player, m_sonos, m_languages}; }
    [[nodiscard]] const QString& currentSongText() const { return m_currentSongText; }
    [[nodiscard]] const std::optional<QString>& nextSongText() const { return m_nextSongText; }
    [[nodiscard]] const PopupWindow* aboutWindow() const { return m_aboutWindow.get(); }
    /// Null until launch has finished.
    [[nodiscard]] StatusItem* statusItem() { return m_statusItem.get(); }

private:
    void installStatusItem();
    void installCallbacks();
    /// Wraps `work` so that it runs on the main queue, later, and only while this delegate lives.
    [[nodiscard]] std::function<void()> onMainQueue(std::function<void()> work);
    enum class Asked { byPerson, byNobody };
    void openAboutWindow(Asked asked);
    /// The status bar is there after all: takes back a window that nobody asked for or turned to.
    void withdrawAboutWindow();
    void closeAboutWindow();
    void forgetAboutWindow();
    [[nodiscard]] StatusMenuActions menuActions();
    void completeState(RadioState& state) const;
    [[nodiscard]] RadioControls::Shell shell();

    static inline AppDelegate* s_shared = nullptr;

    Environment m_environment;
    std::unique_ptr<StatusItem> m_statusItem;
    std::unique_ptr<RadioViewModel> m_viewModel;
    RadioPlayer& m_player;
    SonosManager& m_sonos;
    std::unique_ptr<PopupWindow> m_aboutWindow;
    bool m_isAboutWindowWanted = false;
    LanguageManager& m_languages;
    QString m_currentSongText;
    std::optional<QString> m_nextSongText;
    RadioStateSource m_state;
    RadioControls m_controls;
    Lifetime m_lifetime;
};

/// For example "1.0 (Build 1)", which is also what an empty description gives.
[[nodiscard]] QString versionText(const QVariantMap& bundle);

} // namespace zofra
