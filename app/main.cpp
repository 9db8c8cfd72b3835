// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/DisplayProbe.h"
#include "app/OptionTable.h"
#include "app/RunningProgram.h"
#include "app/SongHistory.h"
#include "app/Terminal.h"
#include "app/ZofraMenuBarApp.h"
#include "app/doctor/DoctorRun.h"
#include "platform/RegularFile.h"
#include "platform/linux/Allocator.h"
#include "platform/linux/IniFile.h"
#include "platform/linux/PreferredLanguages.h"
#include "platform/linux/XdgFolders.h"
#include "platform/linux/x11/XServer.h"
#include "stations/texts/CommandTexts.h"

#include <QApplication>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

using namespace zofra;

/// The command line's language: the one chosen in the program, else the system's, else English.
AppLanguage commandLanguage() {
    const auto settings = inifile::read(IniDefaultsStore::defaultPath());
    const auto stored = settings ? settings->value("app_language") : std::nullopt;
    return languageAtStart(stored ? std::optional(QString::fromUtf8(*stored)) : std::nullopt,
                           preferredLanguages());
}

int printHistory(const Options& options) {
    const auto file = readRegularFile(ZofraMenuBarApp::historyPath(), SongHistory::maxBytes);
    if (!file)
        return refuse(failed, file.error());
    const SongHistory history(file->value_or(QByteArray()));
    if (options.isJson)
        return print(history.forScripts());
    return history.songs().empty() ? refuse(fine, texts::command::noHistory.in(options.language))
                                   : print(history.lines());
}

int start(const Options& options, bool hasDisplay, const Activation& activation) {
    // None of these is ever destroyed: see ZofraMenuBarApp.
    auto& mainQueue = *new QtMainQueue;
    auto& sessionBus = *new SessionBus(SessionBus::Kind::session, mainQueue);
    if (options.task == Options::Task::doctor)
        return runDoctor(options, versionText(ZofraMenuBarApp::bundle()), mainQueue, sessionBus);
    if (options.task != Options::Task::run || options.needsRunning()) {
        const auto bus = sessionBus.connection();
        return bus ? RunningProgram(*bus, options).ask()
                   : refuse(failed, texts::command::noBus.in(options.language));
    }

    auto& applicationBus = *new ApplicationBus(sessionBus);
    if (applicationBus.tryAcquire() == ApplicationBus::Claim::anotherIsRunning)
        return RunningProgram(*sessionBus.connection(), options).handOver(activation);

    auto hosts = ServiceHosts::load(xdg::configFiles(ServiceHosts::fileName), options.endpointsFile);
    if (!hosts)
        return refuse(misused, hosts.error());
    if (!hasDisplay && !options.headless)
        return refuse(failed, texts::command::noDisplay.in(options.language));

    neverWaitForReaders();
    auto& program =
        *new ZofraMenuBarApp({options, *hosts, activation}, mainQueue, sessionBus, applicationBus);
    return program.run();
}

std::unique_ptr<QCoreApplication> makeApplication(const Options& options, int& argc, char** argv,
                                                  bool& hasDisplay) {
    QCoreApplication::setApplicationName(u"zofrazofra"_qs);
    QCoreApplication::setApplicationVersion(QStringLiteral(ZOFRA_VERSION));
    const bool needsDisplay =
        options.task == Options::Task::run && !options.headless && !options.needsRunning();
    const auto display =
        needsDisplay ? usableDisplay() : std::nullopt; // held until the toolkit has connected
    hasDisplay = display.has_value();
    if (!hasDisplay)
        return std::make_unique<QCoreApplication>(argc, argv);
    qputenv("QT_QPA_PLATFORM", display->platform.toUtf8());
    QGuiApplication::setDesktopFileName(u"be.zofra.ZofraZofra"_qs);
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
    const Options& options = *parsed;
    if (options.task == Options::Task::help)
        return print(helpText(options.language));
    if (options.task == Options::Task::history)
        return printHistory(options);
    if (options.task == Options::Task::version)
        return print(u"zofrazofra "_qs + versionText(ZofraMenuBarApp::bundle()));

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
