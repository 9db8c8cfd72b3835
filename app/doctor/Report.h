// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/Finding.h"

namespace zofra::doctor {

/// Everything that was found, in the order in which it is shown. A plain value.
struct Report {
    /// "1.0 (1)".
    QString version;
    Findings findings;

    [[nodiscard]] qsizetype problems() const;
    /// 0 when all is fine, 1 with a problem, 2 when an endpoints file is wrong.
    [[nodiscard]] int exitStatus() const;
};

/// The area of findings about endpoints files, whose problems have an exit status of their own.
inline constexpr const char* endpointsArea = "endpoints";

/// The object that `--doctor --json` prints: `version`, `status` ("ok" or "problem"), `problems` (how many),
/// `checks`: a list of `area`, `status` ("ok", "problem", "skipped"), `text`, `cure` (or null), `details`.
[[nodiscard]] QJsonObject toJson(const Report& report);

/// What `--doctor` prints, without a last line end: lines of at most `columns` characters, whatever was
/// found. Where findings that follow each other have the same cure, it stands once, after the last.
[[nodiscard]] QString toText(const Report& report, AppLanguage language = AppLanguage::en, int columns = 80);

} // namespace zofra::doctor
