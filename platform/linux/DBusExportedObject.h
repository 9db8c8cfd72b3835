// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace zofra::dbus {

struct Argument {
    QString name;
    QString signature;
};

struct Error {
    QString name;
    QString text;
};

/// What a method comes to: values, or an error. `afterwards` runs when the answer has been sent.
struct Answer {
    QVariantList values;
    std::optional<Error> error;
    std::function<void()> afterwards;
};

struct Method {
    QString name;
    std::vector<Argument> in;
    std::vector<Argument> out;
    /// Called with arguments of exactly the types in `in`.
    std::function<Answer(const QVariantList& arguments)> handler;
};

struct Signal {
    QString name;
    std::vector<Argument> arguments;
};

struct Property {
    QString name;
    QString signature;
    std::function<QVariant()> get;
    /// Absent for one that can only be read. Called with a value of type `signature`.
    std::function<std::optional<Error>(const QVariant& value)> set;
    enum class Changes { areTold, areNotTold, never };
    Changes changes = Changes::areTold;
};

struct Interface {
    QString name;
    std::vector<Method> methods;
    std::vector<Signal> signalList;
    std::vector<Property> properties;
};

/// An object on a bus made from tables, so that what it says of itself is what it does: unknown interfaces,
/// methods and properties, wrong types and read-only properties are answered with the right errors. Main
/// thread only.
class ExportedObject final : public QDBusVirtualObject {
public:
    ExportedObject(QString path, std::vector<Interface> interfaces);
    ~ExportedObject() override;
    ExportedObject(const ExportedObject&) = delete;
    ExportedObject& operator=(const ExportedObject&) = delete;

    /// Appears on `connection`, instead of the one before. False when the path is taken.
    bool exportOn(const QDBusConnection& connection);
    /// Forgets the connection, which is gone.
    void connectionLost();

    /// Tells every listener which properties have a new value since the last time this was called, or since
    /// they were exported; nothing when none has.
    void tellChangedProperties();

    [[nodiscard]] QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    [[nodiscard]] Answer answer(const QDBusMessage& message) const;
    [[nodiscard]] Answer answerProperties(const QDBusMessage& message) const;
    [[nodiscard]] Answer getAll(const Interface& interface) const;
    [[nodiscard]] const Interface* findInterface(const QString& name) const;

    QString m_path;
    std::vector<Interface> m_interfaces;
    std::optional<QDBusConnection> m_connection;
    /// Values last told, by interface and name.
    std::vector<std::vector<QVariant>> m_told;
};

} // namespace zofra::dbus
