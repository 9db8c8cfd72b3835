// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RunningProgram.h"

#include "app/ChangeFollower.h"
#include "app/RemoteOptions.h"
#include "app/StatusReport.h"
#include "app/Terminal.h"
#include "platform/ForeignText.h"
#include "stations/texts/CommandTexts.h"

#include <QDBusConnectionInterface>
#include <QJsonDocument>

#include <chrono>
#include <thread>

namespace zofra {

namespace {

namespace text = texts::command;

bool isRunning(const QDBusConnection& bus) {
    return bus.interface()->isServiceRegistered(ApplicationBus::name);
}

/// Until the running program has left the bus, so that a next start is a first one again.
bool waitForTheEnd(const QDBusConnection& bus) {
    for (int i = 0; i < 100 && isRunning(bus); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    return !isRunning(bus);
}

int quitRunning(const QDBusConnection& bus, const Options& options) {
    if (!isRunning(bus))
        return refuse(failed, text::notRunning.in(options.language));
    // That it has left is what counts; a program that leaves quickly may take its answer with it.
    static_cast<void>(RunningApplication(bus).run(toVariantMap(options)));
    return waitForTheEnd(bus) ? fine : refuse(failed, text::noAnswer.in(options.language));
}

int printState(const QDBusConnection& bus, const Options& options) {
    const auto json = RunningApplication(bus).status();
    if (!json)
        return refuse(failed, text::notRunning.in(options.language));
    const QJsonObject state = QJsonDocument::fromJson(json->toUtf8()).object();
    if (options.task == Options::Task::song)
        return print(visibleText(state.value(u"song").toString()));
    return print(options.isJson ? *json : statusLines(state));
}

} // namespace

int askRunning(const std::optional<QDBusConnection>& bus, const Options& options) {
    if (!bus)
        return refuse(failed, text::noBus.in(options.language));
    switch (options.task) {
    case Options::Task::quit:
        return quitRunning(*bus, options);
    case Options::Task::follow:
        return ChangeFollower(*bus, options.isJson ? ChangeFollower::Form::json : ChangeFollower::Form::text)
            .run();
    case Options::Task::run:
        return isRunning(*bus) ? handOver(*bus, options, {})
                               : refuse(failed, text::notRunning.in(options.language));
    default:
        return printState(*bus, options);
    }
}

int handOver(const QDBusConnection& bus, const Options& options, const Activation& activation) {
    const RunningApplication running(bus);
    const QVariantMap map = toVariantMap(options);
    if (map.isEmpty())
        return running.activate(activation) ? fine : refuse(failed, text::noAnswer.in(options.language));
    const auto reply = running.run(map);
    if (!reply)
        return refuse(failed, text::noAnswer.in(options.language));
    return reply->line.isEmpty() ? reply->exitStatus
                                 : refuse(static_cast<ExitStatus>(reply->exitStatus), reply->line);
}

} // namespace zofra
