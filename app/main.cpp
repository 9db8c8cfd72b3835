// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/CommandLanguage.h"
#include "app/DisplayProbe.h"
#include "app/Options.h"
#include "app/RemoteOptions.h"
#include "app/StatusReport.h"
#include "app/ZofraMenuBarApp.h"
#include "app/doctor/DoctorRun.h"
#include "platform/linux/Allocator.h"
#include "platform/linux/XdgFolders.h"
#include "platform/linux/x11/XServer.h"
#include "stations/texts/CommandTexts.h"

#include <QApplication>
#include <QDBusConnectionInterface>
#include <QJsonDocument>

#include <chrono>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <thread>

namespace {

using namespace zofra;

enum ExitStatus : int { fine = 0, failed = 1, misused = 2 };

int refuse(ExitStatus status, const QString& line) {
    std::fprintf(stderr, "zofrazofra: %s\n", qUtf8Printable(line));
    return status;
}

int refuse(ExitStatus status, const Text& text) {
    return refuse(status, text.in(commandLanguage()));
}

int print(const QString& text) {
    std::printf("%s\n", qUtf8Printable(text));
    return std::fflush(stdout) == 0 ? fine : failed;
}

QString version() {
    return versionText({{QStringLiteral("CFBundleShortVersionString"), QStringLiteral(ZOFRA_VERSION)},
                        {QStringLiteral("CFBundleVersion"), QStringLiteral(ZOFRA_BUILD_NUMBER)}});
}

int printStatus(const QDBusConnection& bus, Options::Task task) {
    const auto json = RunningApplication(bus).status();
    if (!json)
        return refuse(failed, texts::command::notRunning);
    if (task == Options::Task::statusJson)
        return print(*json);
    return print(statusLines(QJsonDocument::fromJson(json->toUtf8()).object()));
}

bool isRunning(const QDBusConnection& bus) {
    return bus.interface()->isServiceRegistered(QStringLiteral("be.zofra.ZofraZofra"));
}

/// Until the running program has left the bus, so that a next start is a first one again.
bool waitForTheEnd(const QDBusConnection& bus) {
    for (int i = 0; i < 100 && isRunning(bus); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    return !isRunning(bus);
}

int quitRunning(const QDBusConnection& bus, const QVariantMap& request) {
    if (!isRunning(bus))
        return refuse(failed, texts::command::notRunning);
    // The answer may be lost when the program leaves as quickly as it should: that it has left is what
    // counts.
    static_cast<void>(RunningApplication(bus).run(request));
    return waitForTheEnd(bus) ? fine : refuse(failed, texts::command::noAnswer);
}

int handOver(const QDBusConnection& bus, const Options& options, const Activation& activation = {}) {
    const RunningApplication running(bus);
    const QVariantMap map = toVariantMap(options);
    if (options.task == Options::Task::quit)
        return quitRunning(bus, map);
    if (map.isEmpty())
        return running.activate(activation) ? fine : refuse(failed, texts::command::noAnswer);
    const auto reply = running.run(map);
    if (!reply)
        return refuse(failed, texts::command::noAnswer);
    if (!reply->line.isEmpty())
        std::fprintf(stderr, "zofrazofra: %s\n", qUtf8Printable(reply->line));
    return reply->exitStatus;
}

/// Asks the running program for something, without becoming one.
int askRunning(const std::optional<QDBusConnection>& bus, const Options& options) {
    if (!bus)
        return refuse(failed, texts::command::noBus);
    if (options.task == Options::Task::quit)
        return handOver(*bus, options);
    return printStatus(*bus, options.task);
}

int start(const Options& options, bool hasDisplay, const Activation& activation) {
    // None of these is ever destroyed: see ZofraMenuBarApp.
    auto& mainQueue = *new QtMainQueue;
    auto& sessionBus = *new SessionBus(SessionBus::Kind::session, mainQueue);
    if (options.task == Options::Task::doctor || options.task == Options::Task::doctorJson)
        return runDoctor(options, version(), mainQueue, sessionBus);
    if (options.task != Options::Task::run)
        return askRunning(sessionBus.connection(), options);

    auto& applicationBus = *new ApplicationBus(sessionBus);
    if (applicationBus.tryAcquire() == ApplicationBus::Claim::anotherIsRunning)
        return handOver(*sessionBus.connection(), options, activation);

    auto hosts = ServiceHosts::load(xdg::configFiles(ServiceHosts::fileName), options.endpointsFile);
    if (!hosts)
        return refuse(misused, hosts.error());
    if (!hasDisplay && !options.headless)
        return refuse(failed, texts::command::noDisplay);

    neverWaitForReaders();
    auto& program = *new ZofraMenuBarApp(
        {options, *hosts,
         options.headless ? ZofraMenuBarApp::Display::none : ZofraMenuBarApp::Display::present, activation},
        mainQueue, sessionBus, applicationBus);
    return program.run();
}

std::unique_ptr<QCoreApplication> makeApplication(const Options& options, int& argc, char** argv,
                                                  bool& hasDisplay) {
    QCoreApplication::setApplicationName(QStringLiteral("zofrazofra"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ZOFRA_VERSION));
    const bool needsDisplay = options.task == Options::Task::run && !options.headless;
    const auto display =
        needsDisplay ? usableDisplay() : std::nullopt; // held until the toolkit has connected
    hasDisplay = display.has_value();
    if (!hasDisplay)
        return std::make_unique<QCoreApplication>(argc, argv);
    qputenv("QT_QPA_PLATFORM", display->platform.toUtf8());
    QGuiApplication::setDesktopFileName(QStringLiteral("be.zofra.ZofraZofra"));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    return std::make_unique<QApplication>(argc, argv);
}

} // namespace

// Nothing here can be done about what is thrown: memory has run out.
// NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char** argv) {
    tuneAllocator();
    prepareStandardStreams();
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    const auto parsed = parseOptions(arguments, commandLanguage());
    if (!parsed)
        return refuse(misused, parsed.error());
    const auto& options = *parsed;
    if (options.task == Options::Task::help)
        return print(helpText(commandLanguage()));
    if (options.task == Options::Task::version)
        return print(QStringLiteral("zofrazofra ") + version());

    bool hasDisplay = false;
    const Activation activation = Activation::takeFromEnvironment();
    // The toolkit must not take options of ours for its own.
    int toolkitArgc = 1;
    // NOLINTNEXTLINE(clang-analyzer-deadcode.DeadStores): it is there until the end, and asked for by itself
    const auto application = makeApplication(options, toolkitArgc, argv, hasDisplay);
    // The toolkit sets the user's locale; the audio engine must read numbers with points.
    std::setlocale(LC_NUMERIC, "C");
    if (const auto server = XServer::ofToolkit())
        server->endStartup(activation.desktopStartupId);
    const int status = start(options, hasDisplay, activation);
    // Threads may still be at work: whatever they use must not be taken apart under them.
    std::fflush(nullptr);
    std::_Exit(status);
}
