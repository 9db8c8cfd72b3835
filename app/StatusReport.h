// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/AudioOutputTarget.h"
#include "stations/AppLanguage.h"
#include "stations/RadioStation.h"

#include <QJsonObject>
#include <QString>

#include <optional>
#include <vector>

namespace zofra {

/// The state of the running program as others may ask for it.
struct StatusReport {
    struct Room {
        QString id;
        QString title;
        qsizetype players = 0;
        friend bool operator==(const Room&, const Room&) = default;
    };

    RadioStation station = RadioStation::zofra;
    bool playing = false;
    bool buffering = false;
    float volume = 0.0F;
    AudioOutputTarget output = AudioOutputTarget::localMac();
    QString outputTitle;
    QString song;
    /// Absent also when the text is empty.
    std::optional<QString> next;
    AppLanguage language = AppLanguage::en;
    std::vector<Room> rooms;
    bool scanning = false;
    bool networkDenied = false;
    QString tray;
    QString version;

    friend bool operator==(const StatusReport&, const StatusReport&) = default;
};

/// The object that `--status --json` prints.
[[nodiscard]] QJsonObject toJson(const StatusReport& report);
/// What `--status` prints of that object, a line for each field.
[[nodiscard]] QString statusLines(const QJsonObject& report);

} // namespace zofra
