// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/Report.h"

#include "app/Terminal.h"
#include "platform/ForeignText.h"
#include "stations/texts/DoctorTexts.h"

#include <QJsonArray>
#include <QSet>
#include <QStringList>

#include <algorithm>
#include <array>

namespace zofra::doctor {

namespace {

namespace text = texts::doctor;

constexpr int verdictWidth = 9;
constexpr int areaWidth = 10;
constexpr int indent = verdictWidth + areaWidth;
constexpr int narrowest = indent + 20;

QString heading(const Finding& finding, AppLanguage language) {
    const bool isProblem = finding.verdict == Verdict::problem;
    const QString verdict = isProblem                             ? text::problem.in(language)
                            : finding.verdict == Verdict::skipped ? u"-"_qs
                                                                  : u"ok"_qs;
    return verdict.leftJustified(verdictWidth) + finding.area.leftJustified(areaWidth);
}

void append(QStringList& lines, const QString& start, const QString& text, int columns) {
    QString before = start;
    for (const auto& line : wrapped(visibleText(text), columns - indent)) {
        lines.append(before + line);
        before = QString(indent, u' ');
    }
}

QString summary(qsizetype problems, AppLanguage language) {
    if (problems == 0)
        return text::everythingFine.in(language);
    return problems == 1 ? text::oneProblem.in(language) : text::problems.in(language, problems);
}

QString name(Verdict verdict) {
    static constexpr std::array names{"ok", "problem", "skipped"};
    return QString::fromLatin1(names.at(static_cast<std::size_t>(verdict)));
}

QJsonObject toJson(const Finding& finding) {
    return {{u"area"_qs, finding.area},
            {u"status"_qs, name(finding.verdict)},
            {u"text"_qs, finding.text},
            {u"cure"_qs, finding.cure.isEmpty() ? QJsonValue() : QJsonValue(finding.cure)},
            {u"details"_qs, finding.details}};
}

} // namespace

qsizetype Report::problems() const {
    return std::ranges::count(findings, Verdict::problem, &Finding::verdict);
}

int Report::exitStatus() const {
    const bool isMisused = std::ranges::any_of(findings, [](const Finding& finding) {
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
    return {{u"version"_qs, report.version},
            {u"status"_qs, name(report.problems() > 0 ? Verdict::problem : Verdict::ok)},
            {u"problems"_qs, report.problems()},
            {u"checks"_qs, checks}};
}

QString toText(const Report& report, AppLanguage language, int columns) {
    const int width = std::max(columns, narrowest);
    QSet<QString> told;
    QStringList lines{u"Zofra Zofra "_qs + report.version, QString()};
    for (std::size_t i = 0; i < report.findings.size(); ++i) {
        const auto& finding = report.findings[i];
        append(lines, heading(finding, language), finding.text, width);
        const bool isRepeated = i + 1 < report.findings.size() && report.findings[i + 1].cure == finding.cure;
        if (finding.cure.isEmpty() || isRepeated)
            continue;
        const QString cure = told.contains(finding.cure) ? text::asAbove.in(language) : finding.cure;
        told.insert(finding.cure);
        append(lines, QString(indent, u' '), text::toDo.in(language, cure), width);
    }
    lines.append(QString());
    lines.append(summary(report.problems(), language));
    return lines.join(u'\n');
}

} // namespace zofra::doctor
