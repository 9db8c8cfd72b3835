// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/ChangeFollower.h"
#include "app/Options.h"
#include "app/RemoteOptions.h"
#include "app/StatusReport.h"
#include "app/Terminal.h"
#include "platform/ForeignText.h"
#include "platform/linux/ApplicationBus.h"
#include "stations/texts/CommandTexts.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QJsonDocument>

#include <chrono>
#include <thread>

namespace zofra {

/// What a second start does with the program that runs already.
class RunningProgram {
public:
    /// `options` outlive it.
    RunningProgram(const QDBusConnection& bus, const Options& options)
        : m_bus(bus)
        , m_running(bus)
        , m_options(options) {}

    /// Asks it for what the options want to know, or to end, without becoming one. Answers the exit status.
    [[nodiscard]] int ask() const {
        switch (m_options.task) {
        case Options::Task::quit:
            return quit();
        case Options::Task::follow:
            return ChangeFollower(m_bus,
                                  m_options.isJson ? ChangeFollower::Form::json : ChangeFollower::Form::text)
                .run();
        case Options::Task::run:
            return isRunning() ? handOver({}) : refused(texts::command::notRunning);
        default:
            return printState();
        }
    }

    /// Has it do what the options say; without any, it shows the panel. Answers the exit status.
    [[nodiscard]] int handOver(const Activation& activation) const {
        const QVariantMap map = toVariantMap(m_options);
        if (map.isEmpty())
            return m_running.activate(activation) ? fine : refused(texts::command::noAnswer);
        const auto reply = m_running.run(map);
        if (!reply)
            return refused(texts::command::noAnswer);
        return reply->line.isEmpty() ? reply->exitStatus
                                     : refuse(static_cast<ExitStatus>(reply->exitStatus), reply->line);
    }

private:
    [[nodiscard]] bool isRunning() const {
        return m_bus.interface()->isServiceRegistered(ApplicationBus::name);
    }
    [[nodiscard]] int refused(const Text& why) const { return refuse(failed, why.in(m_options.language)); }

    [[nodiscard]] int quit() const {
        if (!isRunning())
            return refused(texts::command::notRunning);
        // That it has left is what counts; a program that leaves quickly may take its answer with it.
        static_cast<void>(m_running.run(toVariantMap(m_options)));
        // Until it has left the bus, so that a next start is a first one again.
        for (int i = 0; i < 100 && isRunning(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return isRunning() ? refused(texts::command::noAnswer) : fine;
    }

    [[nodiscard]] int printState() const {
        const auto json = m_running.status();
        if (!json)
            return refused(texts::command::notRunning);
        const QJsonObject state = QJsonDocument::fromJson(json->toUtf8()).object();
        if (m_options.task == Options::Task::song)
            return print(visibleText(state.value(u"song").toString()));
        return print(m_options.isJson ? *json : statusLines(state));
    }

    QDBusConnection m_bus;
    RunningApplication m_running;
    const Options& m_options;
};

} // namespace zofra
