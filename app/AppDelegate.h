// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/PopupWindow.h"
#include "app/StatusMenu.h"
#include "metadata/RadioViewModel.h"
#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "platform/HttpSession.h"
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
    [[nodiscard]] static AppDelegate* shared();

    void applicationDidFinishLaunching();
    void statusBarButtonClicked(std::optional<ButtonEvent> currentEvent);
    void showContextMenu();
    /// The status-bar menu for the current state.
    [[nodiscard]] Menu contextMenu();
    [[nodiscard]] bool validateMenuItem(const MenuItem& item) const;

    void togglePlayRadio();
    void selectStationFromMenuItem(const MenuItem& sender);
    void selectOutputMac();
    void selectOutputSonos(const MenuItem& sender);
    void selectOutputEverywhere();
    void rescanSonos();
    void openLocalNetworkSettings();
    void setVolumeFromMenuItem(const MenuItem& sender);
    void showAboutWindow();
    void windowWillClose(const PopupWindow& closing);
    void quit();
    void updateStatusBarButton();

    /// The menu's acts without a menu, for the command line, media controls and the wheel.
    void selectStation(RadioStation station);
    void selectOutput(const SonosRoom& room);
    /// Anything but a number is ignored, and what lies outside of 0 to 1 is brought inside.
    void setVolume(float value);
    /// Raises or lowers the volume by `steps` of five percent and shows it.
    void scrollVolume(int steps);

    /// Whether the current output plays, whatever it is.
    [[nodiscard]] bool isPlaying() const;
    [[nodiscard]] RadioViewModel& viewModel() { return *m_viewModel; }
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
    /// Wraps what a menu or a window does, for it may be chosen when this delegate is gone.
    template<typename Work>
    [[nodiscard]] auto whileAlive(Work work) const;
    void openAboutWindow();
    void closeAboutWindow();
    void forgetAboutWindow();
    void chooseVolume(float value);
    [[nodiscard]] StatusMenuState menuState() const;
    [[nodiscard]] StatusMenuActions menuActions();
    [[nodiscard]] QString statusWord() const;
    [[nodiscard]] QString toolTip() const;

    Environment m_environment;
    std::unique_ptr<StatusItem> m_statusItem;
    std::unique_ptr<RadioViewModel> m_viewModel;
    RadioPlayer& m_player;
    SonosManager& m_sonos;
    std::unique_ptr<PopupWindow> m_aboutWindow;
    LanguageManager& m_languages;
    QString m_currentSongText;
    std::optional<QString> m_nextSongText;
    std::shared_ptr<char> m_alive = std::make_shared<char>();
};

/// For example "1.0 (Build 1)", which is also what an empty description gives.
[[nodiscard]] QString versionText(const QVariantMap& bundle);

} // namespace zofra
