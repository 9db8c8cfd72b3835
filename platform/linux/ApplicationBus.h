// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Observable.h"
#include "platform/linux/RateLimit.h"
#include "platform/linux/SessionBus.h"

#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace zofra {

namespace dbus {
class ExportedObject;
struct Interface;
} // namespace dbus

/// What a desktop hands over with a request, so that a window may take the focus.
struct Activation {
    QString desktopStartupId;
    QString activationToken;

    /// From and to the map that travels on the bus.
    [[nodiscard]] static Activation fromPlatformData(const QVariantMap& data);
    [[nodiscard]] QVariantMap platformData() const;
    /// What this process was started with ($DESKTOP_STARTUP_ID, $XDG_ACTIVATION_TOKEN), taken out of the
    /// environment so that no child passes it for its own. To be called before the toolkit starts, which
    /// takes a part of it away.
    [[nodiscard]] static Activation takeFromEnvironment();

    friend bool operator==(const Activation&, const Activation&) = default;
};

/// What a second start is to print and to exit with.
struct RunReply {
    int exitStatus = 0;
    /// Nothing is printed when it is empty.
    QString line;

    friend bool operator==(const RunReply&, const RunReply&) = default;
};

/// The one running program on the session bus: be.zofra.ZofraZofra with org.freedesktop.Application, and the
/// program's own interface for a second start. Callbacks not set answer with an error. Main thread only,
/// callbacks included.
class ApplicationBus final {
public:
    /// `bus` must outlive it.
    explicit ApplicationBus(SessionBus& bus);
    ~ApplicationBus();

    enum class Claim { acquired, anotherIsRunning, noBus };
    /// Tries to become the one running program; waits for the bus for `timeout` at most. Unless another is
    /// running, the name is claimed again whenever the bus has come back, or at last answers. To be called
    /// after the callbacks are set.
    [[nodiscard]] Claim tryAcquire(std::chrono::milliseconds timeout = std::chrono::seconds(5));
    /// Whether this program has ever been the running one.
    [[nodiscard]] bool hasBeenRunning() const { return m_hasBeenRunning; }
    /// Gives the running program `options`, as a second start would; one without any, that has never been the
    /// running one, asks that the other be shown. `taken` is called once it has answered; one that has gone
    /// meanwhile leaves the name to be claimed anew.
    void handOver(const QVariantMap& options, const Activation& activation, std::function<void()> taken);

    /// Another has become the running program meanwhile: there is one, so this one hands over and ends.
    std::function<void()> onAnotherIsRunning;

    std::function<void(const Activation&)> onActivate;
    std::function<void(const QStringList& uris, const Activation&)> onOpen;
    std::function<void(const QString& action, const QVariantList& parameter, const Activation&)>
        onActivateAction;
    /// A second start with options.
    std::function<RunReply(const QVariantMap& options)> onRun;
    /// The state as JSON text.
    std::function<QString()> onStatus;
    /// What a status bar shows, as JSON text; a property whose changes are told.
    std::function<QString()> onBarLine;
    /// Tells whoever listens, if the bar's line has changed.
    void tellChanges();

    // Where it is found.
    static constexpr QLatin1String name{"be.zofra.ZofraZofra"};
    static constexpr QLatin1String path{"/be/zofra/ZofraZofra"};
    static constexpr QLatin1String ownInterfaceName{"be.zofra.ZofraZofra1"};
    static constexpr QLatin1String barLineName{"BarLine"};

private:
    [[nodiscard]] dbus::Interface applicationInterface();
    [[nodiscard]] dbus::Interface ownInterface();
    void claim(const QDBusConnection& connection);

    SessionBus& m_bus;
    bool m_hasBeenRunning = false;
    std::unique_ptr<dbus::ExportedObject> m_object;
    /// Nobody starts programs faster.
    RateLimit m_acts{{50, 100}};
    ObservationToken m_connected;
    ObservationToken m_disconnected;
};

/// The running program as a second start sees it. Every call waits for its answer, at most for `timeout`, and
/// is absent when there was none.
class RunningApplication final {
public:
    explicit RunningApplication(const QDBusConnection& connection,
                                std::chrono::milliseconds timeout = std::chrono::seconds(5));

    [[nodiscard]] std::optional<RunReply> run(const QVariantMap& options) const;
    [[nodiscard]] std::optional<QString> status() const;
    /// True when the running program has answered.
    [[nodiscard]] bool activate(const Activation& activation) const;

private:
    [[nodiscard]] std::optional<QVariantList> call(const char* interface, const char* method,
                                                   const QVariantList& arguments) const;
    QDBusConnection m_connection;
    std::chrono::milliseconds m_timeout;
};

} // namespace zofra
