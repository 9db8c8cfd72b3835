// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "stations/AppLanguage.h"
#include "stations/texts/DoctorTexts.h"

#include <QJsonObject>

#include <utility>
#include <vector>

namespace zofra::doctor {

namespace text = texts::doctor;

enum class Verdict { ok, problem, skipped };

/// One thing that was looked at, and what came of it. A plain value.
struct Finding {
    /// What it belongs to, in one word that scripts may rely on: "panel", "audio", "stream".
    QString area;
    Verdict verdict = Verdict::ok;
    /// What was found, on one line.
    QString text;
    /// What to do about it, on one line; of problems only.
    QString cure;
    /// The same for programs.
    QJsonObject details;

    /// The area of findings about endpoints files, whose problems have an exit status of their own.
    static inline const QString endpointsArea = u"endpoints"_qs;

    friend bool operator==(const Finding&, const Finding&) = default;
};

using Findings = std::vector<Finding>;

[[nodiscard]] inline Finding fine(const QString& area, const QString& text, QJsonObject details = {}) {
    return {area, Verdict::ok, text, {}, std::move(details)};
}
[[nodiscard]] inline Finding problem(const QString& area, const QString& text, const QString& cure,
                                     QJsonObject details = {}) {
    return {area, Verdict::problem, text, cure, std::move(details)};
}
[[nodiscard]] inline Finding skipped(const QString& area, const QString& text, QJsonObject details = {}) {
    return {area, Verdict::skipped, text, {}, std::move(details)};
}

} // namespace zofra::doctor
