// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/Report.h"
#include "platform/ForeignText.h"
#include "stations/texts/DoctorTexts.h"

#include <QSet>
#include <QStringList>

#include <algorithm>

namespace zofra::doctor {

namespace {

constexpr int verdictWidth = 9;
constexpr int areaWidth = 10;
constexpr int indent = verdictWidth + areaWidth;
constexpr int narrowest = indent + 20;

/// `text` in lines of at most `width` characters, broken between words where there are any.
QStringList wrapped(const QString& text, int width) {
    QStringList lines;
    QString line;
    for (QString word : text.split(u' ', Qt::SkipEmptyParts)) {
        if (!line.isEmpty() && line.size() + 1 + word.size() > width) {
            lines.append(line);
            line.clear();
        }
        while (word.size() > width) {
            lines.append(word.left(width));
            word.remove(0, width);
        }
        line += (line.isEmpty() || word.isEmpty() ? QString() : QStringLiteral(" ")) + word;
    }
    if (!line.isEmpty() || lines.isEmpty())
        lines.append(line);
    return lines;
}

QString heading(const Finding& finding, AppLanguage language) {
    const bool isProblem = finding.verdict == Verdict::problem;
    const QString verdict = isProblem                             ? texts::doctor::problem.in(language)
                            : finding.verdict == Verdict::skipped ? QStringLiteral("-")
                                                                  : QStringLiteral("ok");
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
        return texts::doctor::everythingFine.in(language);
    return problems == 1 ? texts::doctor::oneProblem.in(language)
                         : texts::doctor::problems.in(language, problems);
}

} // namespace

QString toText(const Report& report, AppLanguage language, int columns) {
    const int width = std::max(columns, narrowest);
    QSet<QString> told;
    QStringList lines{QStringLiteral("Zofra Zofra ") + report.version, QString()};
    for (std::size_t i = 0; i < report.findings.size(); ++i) {
        const auto& finding = report.findings[i];
        append(lines, heading(finding, language), finding.text, width);
        const bool isRepeated = i + 1 < report.findings.size() && report.findings[i + 1].cure == finding.cure;
        if (finding.cure.isEmpty() || isRepeated)
            continue;
        const QString cure = told.contains(finding.cure) ? texts::doctor::asAbove.in(language) : finding.cure;
        told.insert(finding.cure);
        append(lines, QString(indent, u' '), texts::doctor::toDo.in(language, cure), width);
    }
    lines.append(QString());
    lines.append(summary(report.problems(), language));
    return lines.join(u'\n');
}

} // namespace zofra::doctor
