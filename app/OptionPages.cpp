// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/OptionPages.h"

#include "app/OptionTable.h"

#include <QStringList>

namespace zofra {

namespace {

const auto licence = QStringLiteral("# SPDX-License-Identifier: GPL-3.0-or-later\n");

/// The words that a shell may offer for the value of `row`.
QString words(const OptionRow& row) {
    switch (row.offers) {
    case OptionRow::Offers::stations:
        return stationNames().join(QLatin1Char(' '));
    case OptionRow::Offers::stationsAndSteps:
        return QStringLiteral("next previous ") + stationNames().join(QLatin1Char(' '));
    case OptionRow::Offers::outputs:
        return QStringLiteral("here everywhere");
    case OptionRow::Offers::onOrOff:
        return QStringLiteral("on off");
    case OptionRow::Offers::nothing:
    case OptionRow::Offers::files:
        break;
    }
    return {};
}

QString quoted(const QString& text) {
    return QLatin1Char('\'') + QString(text).replace(QLatin1Char('\''), QLatin1String("'\\''")) +
           QLatin1Char('\'');
}

QString bashCase(const OptionRow& row, const QString& offer) {
    return QStringLiteral("    %1) mapfile -t COMPREPLY < <(compgen %2 -- \"$current\") ;;\n")
        .arg(row.name, offer);
}

/// Text in the manual's markup, where a dash and what begins a line mean something.
QString roff(QString text) {
    return text.replace(QLatin1Char('-'), QLatin1String("\\-"));
}

} // namespace

QString bashCompletion() {
    QStringList names;
    QString cases;
    for (const OptionRow& row : optionTable()) {
        names.append(row.name);
        const bool isOptional = row.takes == OptionRow::Takes::valueOrNothing;
        if (row.offers == OptionRow::Offers::files)
            cases += bashCase(row, QStringLiteral("-f"));
        else if (row.takes != OptionRow::Takes::nothing)
            cases += bashCase(
                row,
                QStringLiteral("-W \"%1%2\"").arg(words(row), QLatin1String(isOptional ? " $options" : "")));
    }
    return licence +
           QStringLiteral(
               "# bash completion for zofrazofra\n"
               "_zofrazofra() {\n"
               "    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}\n"
               "    local options=\"%1\"\n"
               "    case $previous in\n"
               "%2"
               "    *) mapfile -t COMPREPLY < <(compgen -W \"$options\" -- \"$current\") ;;\n"
               "    esac\n"
               "}\n"
               "complete -F _zofrazofra zofrazofra\n")
               .arg(names.join(QLatin1Char(' ')), cases);
}

QString zshCompletion() {
    QStringList lines{QStringLiteral("_arguments")};
    for (const OptionRow& row : optionTable()) {
        QString text = QStringLiteral("%1[%2]").arg(row.name, row.help.in(AppLanguage::en));
        if (row.takes != OptionRow::Takes::nothing) {
            const QString offer = row.offers == OptionRow::Offers::files ? QStringLiteral("_files")
                                  : words(row).isEmpty()                 ? QStringLiteral(" ")
                                                         : QStringLiteral("(%1)").arg(words(row));
            const bool isOptional = row.takes == OptionRow::Takes::valueOrNothing;
            text += QStringLiteral("%1:value:%2").arg(QLatin1String(isOptional ? ":" : ""), offer);
        }
        lines.append(quoted(text));
    }
    return QStringLiteral("#compdef zofrazofra\n") + licence + lines.join(QStringLiteral(" \\\n  ")) +
           QLatin1Char('\n');
}

QString fishCompletion() {
    QString text = licence + QStringLiteral("complete -c zofrazofra -f\n");
    for (const OptionRow& row : optionTable()) {
        text += QStringLiteral("complete -c zofrazofra -l ") + QString(row.name).mid(2);
        if (row.offers == OptionRow::Offers::files)
            text += QStringLiteral(" -rF");
        else if (row.takes == OptionRow::Takes::value)
            text += QStringLiteral(" -x");
        if (!words(row).isEmpty())
            text += QStringLiteral(" -a ") + quoted(words(row));
        text += QStringLiteral(" -d %1\n").arg(quoted(row.help.in(AppLanguage::en)));
    }
    return text;
}

QString manualOptions() {
    QString text;
    for (const OptionRow& row : optionTable()) {
        QString help = row.help.in(AppLanguage::en);
        help[0] = help[0].toUpper();
        text += QStringLiteral(".TP\n.B %1\n%2.\n").arg(roff(row.usage()), roff(help));
        if (!row.manual.isEmpty())
            text += row.manual + QLatin1Char('\n');
    }
    return text;
}

} // namespace zofra
