// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/DoctorRun.h"

#include "app/DisplayProbe.h"
#include "app/doctor/AudioFindings.h"
#include "app/doctor/DesktopProbe.h"
#include "app/doctor/Examination.h"
#include "app/doctor/HostChecks.h"
#include "app/doctor/Report.h"
#include "app/doctor/SettingsFindings.h"
#include "app/doctor/SpeakerCheck.h"
#include "platform/JsonRecord.h"
#include "platform/linux/IniDefaultsStore.h"
#include "platform/linux/ThreadTaskPool.h"
#include "platform/linux/XdgFolders.h"
#include "platform/linux/lan/LinuxLocalNetwork.h"
#include "platform/linux/net/CurlGlobal.h"
#include "platform/linux/net/CurlHttpSession.h"
#include "platform/linux/net/CurlLibrary.h"
#include "platform/linux/x11/XServer.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <memory>
#include <semaphore>

namespace zofra::doctor {

namespace {

using namespace std::chrono_literals;
constexpr auto wholeTime = 14s;
constexpr auto audioTime = 10s;

QString displayVariables() {
    QStringList set;
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        const QString value = qEnvironmentVariable(name);
        if (!value.isEmpty())
            set.append(QString::fromLatin1(name) + u'=' + value);
    }
    return set.join(u", "_qs);
}

/// The running program writes the system's log, not whoever looks.
class Silence final : public SystemLog {
public:
    void log(const QString&) override {}
};

/// Puts the checks together, in the order in which they are shown.
class Doctor {
public:
    Doctor(const Options& options, const QString& version, QtMainQueue& mainQueue, SessionBus& sessionBus,
           AppLanguage language)
        : m_options(options)
        , m_version(version)
        , m_mainQueue(mainQueue)
        , m_bus(sessionBus.connection())
        , m_language(language) {}

    std::vector<std::unique_ptr<Check>> makeChecks() {
        std::vector<std::unique_ptr<Check>> checks;
        checks.push_back(desktopCheck());
        checks.push_back(programCheck());
        checks.push_back(audioCheck());
        checks.push_back(settingsCheck());
        addEndpoints(checks);
        checks.push_back(speakerCheck());
        return checks;
    }

private:
    std::unique_ptr<Check> background(const Finding& unfinished, const BackgroundCheck::Work& work) {
        return std::make_unique<BackgroundCheck>(m_tasks, m_mainQueue, unfinished, work);
    }

    /// Of what is known without looking.
    std::unique_ptr<Check> known(const Finding& finding) {
        return background(finding, [finding] { return Findings{finding}; });
    }

    std::unique_ptr<Check> desktopCheck() {
        const auto look = [isHeadless = m_options.headless, bus = m_bus, isKnown = m_desktopIsKnown,
                           language = m_language] {
            DesktopFacts facts;
            facts.isHeadless = isHeadless;
            facts.variables = displayVariables();
            const auto display = isHeadless ? std::nullopt : usableDisplay();
            facts.platform = display ? display->platform : QString();
            const SettingsFacts settings = SettingsFacts::of(IniDefaultsStore::defaultPath());
            facts.session = traySessionFromEnvironment(
                facts.platform, QString::fromUtf8(settings.trayMode.value_or(QByteArray())));
            const auto server = facts.platform == u"xcb" ? XServer::connect() : nullptr;
            facts.hasOldTray = server && server->hasTray();
            isKnown->release();
            if (bus)
                DesktopProbe(*bus).ask(facts);
            return Findings{judgeSession(facts, language), judgePanel(facts, language)};
        };
        return background(
            problem(u"session"_qs, text::desktopSilent.in(m_language), text::logInAgain.in(m_language)),
            look);
    }

    std::unique_ptr<Check> audioCheck() {
        const auto look = [desktopIsKnown = m_desktopIsKnown, language = m_language] {
            // While the engine with its two hundred libraries is being loaded, nobody else can load any.
            static_cast<void>(desktopIsKnown->try_acquire_for(1s));
            return Findings{judgeAudio(SoundServer::find(), AudioProbe::run(audioTime), language)};
        };
        return background(
            problem(u"audio"_qs, text::audioSilent.in(m_language), text::restartAudio.in(m_language)), look);
    }

    std::unique_ptr<Check> programCheck() {
        return background(problem(u"bus"_qs, text::busSilent.in(m_language), text::logInAgain.in(m_language)),
                          [bus = m_bus, version = m_version, language = m_language] {
                              ProgramFacts facts;
                              facts.ownVersion = version;
                              facts.busAddress = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
                              facts.hasBus = bus.has_value();
                              if (bus)
                                  DesktopProbe(*bus).ask(facts);
                              return Findings{judgeBus(facts, language), judgeProgram(facts, language)};
                          });
    }

    std::unique_ptr<Check> settingsCheck() {
        return background(
            problem(u"settings"_qs, text::diskSilent.in(m_language), text::checkDisk.in(m_language)),
            [language = m_language] {
                return Findings{judgeSettings(SettingsFacts::of(IniDefaultsStore::defaultPath()), language)};
            });
    }

    /// Hosts are asked only when it is certain which: a wrong file must not lead to servers nobody meant.
    void addEndpoints(std::vector<std::unique_ptr<Check>>& checks) {
        const auto layers = xdg::configFiles(ServiceHosts::fileName);
        const auto hosts = ServiceHosts::load(layers, m_options.endpointsFile);
        EndpointsFacts facts;
        for (const auto& file : layers) {
            if (QFileInfo::exists(file))
                facts.files.append(file);
        }
        if (m_options.endpointsFile)
            facts.files.append(*m_options.endpointsFile);
        if (!hosts)
            facts.refusal = hosts.error();
        checks.push_back(known(judgeEndpoints(facts, m_language)));
        if (!hosts)
            checks.push_back(known(skipped(u"hosts"_qs, text::hostsNotAsked.in(m_language))));
        else if (const auto& missing = curl().problem)
            checks.push_back(known(problem(u"hosts"_qs, *missing, text::installCurl.in(m_language))));
        else
            addHosts(checks, *hosts);
    }

    void addHosts(std::vector<std::unique_ptr<Check>>& checks, const ServiceHosts& hosts) {
        const auto authority = hosts.extraAuthorityFile();
        const SendProbe send = [authority](const HostProbe::Request& request) {
            return HostProbe::run(request, authority);
        };
        m_liveHttp = std::make_unique<CurlHttpSession>(authority);
        for (const auto& target : HostTarget::all(hosts)) {
            if (target.kind == HostTarget::Kind::live)
                checks.push_back(std::make_unique<LiveSocketCheck>(m_tasks, m_mainQueue, target, send,
                                                                   m_liveHttp->webSockets(), m_language));
            else
                checks.push_back(hostCheck(m_tasks, m_mainQueue, target, send, m_language));
        }
    }

    std::unique_ptr<Check> speakerCheck() {
        if (m_options.noDiscovery) {
            SpeakerFacts facts;
            facts.state = SpeakerFacts::State::notWanted;
            return known(judgeSpeakers(facts, m_language).front());
        }
        // Players are found without it, and asked with it.
        if (const auto& missing = curl().problem)
            return known(skipped(u"players"_qs, *missing));
        return std::make_unique<SpeakerCheck>(
            SpeakerBackground::Outside{m_http, m_mainQueue, m_tasks, m_network, m_silence}, m_language);
    }

    const Options m_options;
    const QString m_version;
    /// Released once display and tray have been looked for.
    const std::shared_ptr<std::binary_semaphore> m_desktopIsKnown =
        std::make_shared<std::binary_semaphore>(0);
    QtMainQueue& m_mainQueue;
    const std::optional<QDBusConnection> m_bus;
    const AppLanguage m_language;
    ThreadTaskPool m_tasks{m_mainQueue};
    CurlHttpSession m_http;
    /// For the live feed's socket, which trusts what the endpoints say.
    std::unique_ptr<CurlHttpSession> m_liveHttp;
    LinuxLocalNetwork m_network;
    Silence m_silence;
};

} // namespace
} // namespace zofra::doctor

namespace zofra {

int runDoctor(const Options& options, const QString& version, QtMainQueue& mainQueue,
              SessionBus& sessionBus) {
    using namespace doctor;
    // A library behind the audio engine would speak in between.
    qputenv("PIPEWIRE_DEBUG", "0");
    // Before other libraries are loaded beside it.
    CurlGlobal::initialise();
    // Scripts are spoken to in one language.
    const bool isForScripts = options.isJson;
    const auto language = isForScripts ? AppLanguage::en : options.language;
    auto& doctor = *new Doctor(options, version, mainQueue, sessionBus, language);
    auto& examination = *new Examination(mainQueue, doctor.makeChecks());
    int status = 1;
    examination.run(wholeTime, [&](Findings findings) {
        const Report report{version, std::move(findings)};
        const QString all = isForScripts ? compactJson(report.toJson()) : report.toText(language);
        status = print(all) == ExitStatus::fine ? report.exitStatus() : ExitStatus::failed;
        QCoreApplication::exit(status);
    });
    QCoreApplication::exec();
    return status;
}

} // namespace zofra
