// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Terminal.h"
#include "app/doctor/Finding.h"
#include "platform/ForeignText.h"

#include <QJsonArray>
#include <QSet>
#include <QStringList>

#include <algorithm>
#include <array>

namespace zofra::doctor {

/// Everything that was found, in the order in which it is shown. A plain value.
struct Report {
    /// "1.0 (1)".
    QString version;
    Findings findings;

    [[nodiscard]] qsizetype problems() const {
        return std::ranges::count(findings, Verdict::problem, &Finding::verdict);
    }
    /// 0 when all is fine, 1 with a problem, 2 when an endpoints file is wrong.
    [[nodiscard]] int exitStatus() const {
        const bool isMisused = std::ranges::any_of(findings, [](const Finding& finding) {
            return finding.verdict == Verdict::problem && finding.area == Finding::endpointsArea;
        });
        return isMisused ? 2 : problems() > 0 ? 1 : 0;
    }

    /// The object that `--doctor --json` prints: `version`, `status` ("ok" or "problem"), `problems` (how
    /// many), `checks`: a list of `area`, `status` ("ok", "problem", "skipped"), `text`, `cure` (or null),
    /// `details`.
    [[nodiscard]] QJsonObject toJson() const {
        QJsonArray checks;
        for (const auto& finding : findings)
            checks.append(
                QJsonObject{{u"area"_qs, finding.area},
                            {u"status"_qs, name(finding.verdict)},
                            {u"text"_qs, finding.text},
                            {u"cure"_qs, finding.cure.isEmpty() ? QJsonValue() : QJsonValue(finding.cure)},
                            {u"details"_qs, finding.details}});
        return {{u"version"_qs, version},
                {u"status"_qs, name(problems() > 0 ? Verdict::problem : Verdict::ok)},
                {u"problems"_qs, problems()},
                {u"checks"_qs, checks}};
    }

    /// What `--doctor` prints, without a last line end: lines of at most `columns` characters, whatever was
    /// found. Where findings that follow each other have the same cure, it stands once, after the last.
    [[nodiscard]] QString toText(AppLanguage language = AppLanguage::en, int columns = 80) const {
        const int width = std::max(columns, narrowest);
        QSet<QString> told;
        QStringList lines{u"Zofra Zofra "_qs + version, QString()};
        for (std::size_t i = 0; i < findings.size(); ++i) {
            const auto& finding = findings[i];
            append(lines, heading(finding, language), finding.text, width);
            const bool isRepeated = i + 1 < findings.size() && findings[i + 1].cure == finding.cure;
            if (finding.cure.isEmpty() || isRepeated)
                continue;
            const QString cure = told.contains(finding.cure) ? text::asAbove.in(language) : finding.cure;
            told.insert(finding.cure);
            append(lines, QString(indent, u' '), text::toDo.in(language, cure), width);
        }
        lines.append(QString());
        lines.append(summary(language));
        return lines.join(u'\n');
    }

private:
    static constexpr int verdictWidth = 9;
    static constexpr int areaWidth = 10;
    static constexpr int indent = verdictWidth + areaWidth;
    static constexpr int narrowest = indent + 20;

    static QString heading(const Finding& finding, AppLanguage language) {
        const bool isProblem = finding.verdict == Verdict::problem;
        const QString verdict = isProblem                             ? text::problem.in(language)
                                : finding.verdict == Verdict::skipped ? u"-"_qs
                                                                      : u"ok"_qs;
        return verdict.leftJustified(verdictWidth) + finding.area.leftJustified(areaWidth);
    }

    static void append(QStringList& lines, const QString& start, const QString& text, int columns) {
        QString before = start;
        for (const auto& line : wrapped(visibleText(text), columns - indent)) {
            lines.append(before + line);
            before = QString(indent, u' ');
        }
    }

    [[nodiscard]] QString summary(AppLanguage language) const {
        const qsizetype count = problems();
        if (count == 0)
            return text::everythingFine.in(language);
        return count == 1 ? text::oneProblem.in(language) : text::problems.in(language, count);
    }

    static QString name(Verdict verdict) {
        static constexpr std::array names{"ok", "problem", "skipped"};
        return QString::fromLatin1(names.at(static_cast<std::size_t>(verdict)));
    }
};

} // namespace zofra::doctor
