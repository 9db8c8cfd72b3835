// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Observable.h"
#include "platform/linux/DBusExportedObject.h"
#include "platform/linux/SessionBus.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace zofra {

/// What desktops search (org.gnome.Shell.SearchProvider2 and org.kde.krunner1): finds the entries one of
/// whose words begins with each word that a person types. Main thread only, callbacks included.
class SearchProvider final {
public:
    struct Entry {
        QString id;
        QString title;
        QString description;
    };

    /// `bus` must outlive it. The application's own name leads here.
    SearchProvider(SessionBus& bus, std::vector<Entry> entries);

    /// An entry has been chosen.
    std::function<void(const QString& id)> onChosen;
    /// A person wants to see more than the results.
    std::function<void()> onShow;

private:
    [[nodiscard]] dbus::Interface shellInterface();
    [[nodiscard]] dbus::Interface runnerInterface();
    [[nodiscard]] QStringList found(const QStringList& terms) const;
    [[nodiscard]] dbus::Answer describe(const QStringList& ids) const;
    [[nodiscard]] dbus::Answer match(const QString& text) const;
    [[nodiscard]] dbus::Answer choose(const QString& id) const;

    std::vector<Entry> m_entries;
    dbus::ExportedObject m_object;
    ObservationToken m_connected;
    ObservationToken m_disconnected;
};

} // namespace zofra
