// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/Finding.h"

#include <QByteArray>

#include <optional>

namespace zofra::doctor {

/// The settings file as it was met.
struct SettingsFacts {
    QString path;
    bool exists = false;
    /// Why it cannot be read; empty when it can be, or there is none.
    QString readProblem;
    /// Holds lines that are no text.
    bool isDamaged = false;
    /// Why nothing can be written there; empty when it can be.
    QString writeProblem;
    /// What stands there, where something does.
    std::optional<QByteArray> volume;
    std::optional<QByteArray> station;
    std::optional<QByteArray> language;
    std::optional<QByteArray> trayMode;

    /// Looks at the file. A trial of writing leaves nothing behind and changes nothing.
    [[nodiscard]] static SettingsFacts of(const QString& path);
};

[[nodiscard]] Finding judgeSettings(const SettingsFacts& facts, AppLanguage language = AppLanguage::en);

/// The endpoints files: which there are, or the one line that says what is wrong with them.
struct EndpointsFacts {
    QStringList files;
    /// Empty when all is well.
    QString refusal;
};
[[nodiscard]] Finding judgeEndpoints(const EndpointsFacts& facts, AppLanguage language = AppLanguage::en);

} // namespace zofra::doctor
