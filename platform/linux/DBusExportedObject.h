// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/RateLimit.h"

#include <QBasicTimer>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QHash>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

namespace zofra::dbus {

struct Error {
    QString name;
    QString text;
};
/// One of the errors that the bus itself knows, `name` without their common prefix.
[[nodiscard]] inline Error error(const char* name, const QString& text) {
    return {u"org.freedesktop.DBus.Error."_qs + QLatin1String(name), text};
}

/// What a method comes to: values, or an error. `afterwards` runs when the answer has been sent.
struct Answer {
    QVariantList values{};
    std::optional<Error> error{};
    std::function<void()> afterwards{};
};
[[nodiscard]] inline Answer refused(const char* name, const QString& text) {
    return {.error = error(name, text)};
}
/// What `act` comes to, unless too many are asked for: what an act starts costs more than the call.
[[nodiscard]] Answer withinLimit(RateLimit& acts, const std::function<Answer()>& act);

/// Arguments are written "name:type name:type", here and in signals.
struct Method {
    const char* name;
    const char* in;
    const char* out;
    /// Called with arguments of exactly the types in `in`.
    std::function<Answer(const QVariantList& arguments)> handler;
};

struct Signal {
    const char* name;
    const char* arguments;
};

struct Property {
    const char* name;
    const char* signature;
    std::function<QVariant()> get;
    enum class Changes { areTold, areNotTold, never };
    Changes changes = Changes::areTold;
    /// Absent for one that can only be read. Called with a value of type `signature`.
    std::function<std::optional<Error>(const QVariant& value)> set = {};
};
[[nodiscard]] inline Property constant(const char* name, const char* signature, const QVariant& value) {
    return {name, signature, [value] { return value; }, Property::Changes::never};
}

struct Interface {
    const char* name;
    std::vector<Method> methods;
    std::vector<Signal> signalList{};
    std::vector<Property> properties{};
};

/// How much a caller on the bus may ask for: calls in one turn of the event loop, calls in the long run, and
/// time of the thread that answers. A plain value.
class CallBudget {
public:
    struct Limits {
        int callsInTurn = 0;
        RateLimit::Rate calls;
        /// Seconds.
        RateLimit::Rate time;
    };

    explicit CallBudget(const Limits& limits)
        : m_mostInTurn(limits.callsInTurn)
        , m_calls(limits.calls)
        , m_time(limits.time) {}

    /// Takes one call; false when there is none left.
    [[nodiscard]] bool take(RateLimit::TimePoint now) {
        return ++m_inTurn <= m_mostInTurn && m_time.hasRoom(now) && m_calls.take(now);
    }
    /// What answering it took.
    void spend(std::chrono::duration<double> time) { m_time.spend(time.count()); }
    void endTurn() { m_inTurn = 0; }
    /// Whether it is as good as new.
    [[nodiscard]] bool isUnused(RateLimit::TimePoint now) {
        return m_calls.isFull(now) && m_time.isFull(now);
    }

private:
    int m_mostInTurn;
    int m_inTurn = 0;
    RateLimit m_calls;
    RateLimit m_time;
};

/// An object on a bus made from tables, so that what it says of itself is what it does: unknown methods and
/// properties, wrong types and read-only properties are answered with the right errors. A method of an
/// unknown interface is an unknown method, for that is what panels take as "do without it". Main thread only.
class ExportedObject final : public QDBusVirtualObject {
public:
    ExportedObject(QString path, std::vector<Interface> interfaces);
    ~ExportedObject() override;

    /// Appears on `connection`, instead of the one before. False when the path is taken.
    bool exportOn(const QDBusConnection& connection);
    /// Forgets the connection, which is gone.
    void connectionLost() { m_connection.reset(); }
    /// Has other members from now on.
    void replaceInterfaces(std::vector<Interface> interfaces);

    /// Tells every listener which properties have a new value since the last time this was called, or since
    /// they were exported; nothing when none has.
    void tellChangedProperties();
    /// Sends a signal of one of the interfaces; nothing where there is no bus.
    void send(const char* interface, const char* signal, const QVariantList& arguments = {}) const;

    [[nodiscard]] QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    /// The answer, or an error when too much is asked.
    [[nodiscard]] Answer answerWithin(const QDBusMessage& message);
    [[nodiscard]] Answer answer(const QDBusMessage& message) const;
    [[nodiscard]] Answer answerProperties(const QDBusMessage& message) const;
    [[nodiscard]] std::vector<QVariantMap> toldValues() const;

    QString m_path;
    std::vector<Interface> m_interfaces;
    std::optional<QDBusConnection> m_connection;
    /// Values last told, by interface and property; only of those whose changes are told.
    std::vector<QVariantMap> m_told;
    /// What is left to all callers together, and to each by its bus name.
    CallBudget m_all;
    QHash<QString, CallBudget> m_callers;
    QBasicTimer m_endOfTurn;
};

} // namespace zofra::dbus
