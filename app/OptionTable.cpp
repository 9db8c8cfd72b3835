// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/OptionTable.h"

#include "stations/texts/CommandTexts.h"

#include <array>

namespace zofra {

namespace {

namespace text = texts::command;
using Task = Options::Task;
using Playback = Options::Playback;
using Takes = OptionRow::Takes;
using Special = OptionRow::Special;

OptionRow flag(const char* name, OptionRow::Meaning meaning, const Text& help, const char* manual = "") {
    return {QLatin1String(name), meaning, Takes::nothing, {}, {}, help, QLatin1String(manual)};
}

OptionRow valued(const char* name, const char* value, OptionRow::Meaning meaning, const QString& offers,
                 const Text& help, const char* manual = "") {
    const Takes takes = *value == '[' ? Takes::valueOrNothing : Takes::value;
    return {QLatin1String(name), meaning, takes, QLatin1String(value), offers, help, QLatin1String(manual)};
}

const auto licence = QStringLiteral("# SPDX-License-Identifier: GPL-3.0-or-later\n");

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

/// `text` after `start`, in lines of at most 92 characters; those that follow begin below it.
QString wrapped(const QString& start, const QString& text) {
    constexpr qsizetype columns = 92;
    const QString indent(start.size(), u' ');
    QString lines;
    QString line = start;
    for (const QString& word : text.split(u' ')) {
        if (line.size() > indent.size() && line.size() + 1 + word.size() > columns) {
            lines += line + u'\n';
            line = indent;
        }
        line += (line.size() > indent.size() ? QStringLiteral(" ") : QString()) + word;
    }
    return lines + line + u'\n';
}

} // namespace

QString OptionRow::usage() const {
    return value.isEmpty() ? QString(name) : QString(name) + QLatin1Char(' ') + value;
}

std::span<const OptionRow> optionTable() {
    static const QString stations = stationNames().join(u' ');
    static const std::array table{
        valued("--play", "[STATION]", Special::play, stations, text::helpPlay),
        flag("--stop", Playback::stop, text::helpStop),
        flag("--toggle", Playback::toggle, text::helpToggle),
        valued("--station", "next|previous|NAME", Special::station,
               QStringLiteral("next previous ") + stations, text::helpStation,
               "After the last station comes the first."),
        valued("--output", "here|everywhere|ROOM", &Options::output, QStringLiteral("here everywhere"),
               text::helpOutput),
        valued("--volume", "N|+N|-N", Special::volume, {}, text::helpVolume,
               "The volume of this computer and, where the sound goes to rooms, theirs."),
        valued("--stop-in", "TIME|off", Special::stopIn, {}, text::helpStopIn,
               "Here and in rooms. What is left is among the fields of\n.BR \\-\\-status .\n"
               "A day at most; it is not remembered beyond the end of the program."),
        valued("--notify", "on|off", Special::notify, QStringLiteral("on off"), text::helpNotify,
               "Remembered. Off until it is asked for."),
        flag("--song", Task::song, text::helpSong),
        flag("--status", Task::status, text::helpStatus),
        flag("--follow", Task::follow, text::helpFollow,
             "Goes on when the program ends and starts again. With\n.B \\-\\-json\n"
             "each line is an object: text, tooltip, class (playing, buffering, stopped or off) and "
             "percentage (the volume)."),
        flag("--history", Task::history, text::helpHistory,
             "The last 200, the newest last; see\n.B history\nbelow. The program need not run."),
        flag(
            "--doctor", Task::doctor, text::helpDoctor,
            "It looks at the session, the panel and the way the button is shown there, the session bus and "
            "the running program, sound,\nsettings, endpoints files, every service host, the local network "
            "and the players in it. Takes fifteen seconds at most,\nasks a running program for its state and "
            "leaves it alone otherwise, and needs neither a display nor a bus.\n"
            ".B \\-\\-no\\-discovery\nleaves out the search for players,\n"
            ".B \\-\\-endpoints\nadds a file of hosts, and\n"
            ".B \\-\\-headless\nleaves out display and panel. With\n"
            ".B \\-\\-json\nit is one object: version, status (ok or problem), problems (how many) and "
            "checks, each with area, status (ok, problem or\nskipped), text, cure and details."),
        flag("--quit", Task::quit, text::helpQuit),
        valued("--endpoints", "FILE", &Options::endpointsFile, {}, text::helpEndpoints),
        flag("--no-discovery", &Options::noDiscovery, text::helpNoDiscovery,
             "No room cache is kept either. The menu can still search."),
        flag("--headless", &Options::headless, text::helpHeadless, "The media bus and all options work."),
        flag("--json", &Options::isJson, text::helpJson),
        flag("--version", Task::version, text::helpVersion),
        flag("--help", Task::help, text::helpHelp)};
    return table;
}

QStringList stationNames() {
    QStringList names;
    for (const RadioStation station : RadioStation::allCases)
        names.append(station.rawValue());
    return names;
}

QString helpText(AppLanguage language) {
    constexpr int textColumn = 35;
    QString help = text::usage.in(language) + u'\n' + wrapped({}, text::purpose.in(language)) + u'\n';
    for (const OptionRow& row : optionTable())
        help +=
            wrapped((QStringLiteral("  ") + row.usage()).leftJustified(textColumn), row.help.in(language));
    help += u'\n' + text::helpStations.in(language, stationNames().join(QStringLiteral(", "))) + u'\n' +
            wrapped({}, text::helpExit.in(language));
    return help.trimmed();
}

QString bashCompletion() {
    QStringList names;
    QString cases;
    for (const OptionRow& row : optionTable()) {
        names.append(row.name);
        const bool isOptional = row.takes == OptionRow::Takes::valueOrNothing;
        if (row.takesFile())
            cases += bashCase(row, QStringLiteral("-f"));
        else if (row.takes != OptionRow::Takes::nothing)
            cases += bashCase(
                row,
                QStringLiteral("-W \"%1%2\"").arg(row.offers, QLatin1String(isOptional ? " $options" : "")));
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
            const QString offer = row.takesFile()        ? QStringLiteral("_files")
                                  : row.offers.isEmpty() ? QStringLiteral(" ")
                                                         : QStringLiteral("(%1)").arg(row.offers);
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
        if (row.takesFile())
            text += QStringLiteral(" -rF");
        else if (row.takes == OptionRow::Takes::value)
            text += QStringLiteral(" -x");
        if (!row.offers.isEmpty())
            text += QStringLiteral(" -a ") + quoted(row.offers);
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
