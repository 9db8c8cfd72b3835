// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/Report.h"

#include <QJsonArray>

#include <algorithm>
#include <array>

namespace zofra::doctor {

namespace {

QString name(Verdict verdict) {
    static constexpr std::array names{"ok", "problem", "skipped"};
    return QString::fromLatin1(names.at(static_cast<std::size_t>(verdict)));
}

QJsonObject toJson(const Finding& finding) {
    return {{QStringLiteral("area"), finding.area},
            {QStringLiteral("status"), name(finding.verdict)},
            {QStringLiteral("text"), finding.text},
            {QStringLiteral("cure"), finding.cure.isEmpty() ? QJsonValue() : QJsonValue(finding.cure)},
            {QStringLiteral("details"), finding.details}};
}

} // namespace

qsizetype Report::problems() const {
    return std::count_if(findings.begin(), findings.end(),
                         [](const Finding& finding) { return finding.verdict == Verdict::problem; });
}

int Report::exitStatus() const {
    const bool isMisused = std::any_of(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.verdict == Verdict::problem && finding.area == QLatin1String(endpointsArea);
    });
    if (isMisused)
        return 2;
    return problems() > 0 ? 1 : 0;
}

QJsonObject toJson(const Report& report) {
    QJsonArray checks;
    for (const auto& finding : report.findings)
        checks.append(toJson(finding));
    return {{QStringLiteral("version"), report.version},
            {QStringLiteral("status"), name(report.problems() > 0 ? Verdict::problem : Verdict::ok)},
            {QStringLiteral("problems"), report.problems()},
            {QStringLiteral("checks"), checks}};
}

} // namespace zofra::doctor
