// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/OptionTable.h"

#include "app/Terminal.h"
#include "stations/texts/CommandTexts.h"

#include <array>

namespace zofra {

namespace {

namespace text = texts::command;
using Task = Options::Task;
using Playback = Options::Playback;
using Special = OptionRow::Special;

OptionRow flag(const char* name, OptionRow::Meaning meaning, const Text& help, const char* manual = "") {
    return {QLatin1String(name), meaning, {}, {}, help, QLatin1String(manual)};
}

OptionRow valued(const char* name, const char* value, OptionRow::Meaning meaning, const QString& offers,
                 const Text& help, const char* manual = "") {
    return {QLatin1String(name), meaning, QLatin1String(value), offers, help, QLatin1String(manual)};
}

const auto licence = u"# SPDX-License-Identifier: GPL-3.0-or-later\n"_qs;

QString quoted(const QString& text) {
    return u'\'' + QString(text).replace(u'\'', QLatin1String("'\\''")) + u'\'';
}

QString bashCase(const OptionRow& row, const QString& offer) {
    return u"    %1) mapfile -t COMPREPLY < <(compgen %2 -- \"$current\") ;;\n"_qs.arg(row.name, offer);
}

/// Text in the manual's markup, where a dash and what begins a line mean something.
QString roff(QString text) {
    return text.replace(u'-', QLatin1String("\\-"));
}

/// `text` after `start`, in lines of at most 92 characters; those that follow begin below it.
QString paragraph(const QString& start, const QString& text) {
    constexpr qsizetype columns = 92;
    const QString below = u'\n' + QString(start.size(), u' ');
    return start + wrapped(text, columns - start.size()).join(below) + u'\n';
}

} // namespace

std::span<const OptionRow> optionTable() {
    static const QString stations = stationNames().join(u' ');
    static const std::array table{
        valued("--play", "[STATION]", Special::play, stations, text::helpPlay),
        flag("--stop", Playback::stop, text::helpStop),
        flag("--toggle", Playback::toggle, text::helpToggle),
        valued("--station", "next|previous|NAME", Special::station, u"next previous "_qs + stations,
               text::helpStation, "After the last station comes the first."),
        valued("--output", "here|everywhere|ROOM", &Options::output, u"here everywhere"_qs, text::helpOutput),
        valued("--volume", "N|+N|-N", Special::volume, {}, text::helpVolume,
               "The volume of this computer and, where the sound goes to rooms, theirs."),
        valued("--stop-in", "TIME|off", Special::stopIn, {}, text::helpStopIn,
               "Here and in rooms. What is left is among the fields of\n.BR \\-\\-status .\n"
               "A day at most; it is not remembered beyond the end of the program."),
        valued("--notify", "on|off", Special::notify, u"on off"_qs, text::helpNotify,
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
    QString help = text::usage.in(language) + u'\n' + paragraph({}, text::purpose.in(language)) + u'\n';
    for (const OptionRow& row : optionTable())
        help += paragraph((u"  "_qs + row.usage()).leftJustified(textColumn), row.help.in(language));
    help += u'\n' + text::helpStations.in(language, stationNames().join(u", "_qs)) + u'\n' +
            paragraph({}, text::helpExit.in(language));
    return help.trimmed();
}

QString bashCompletion() {
    QStringList names;
    QString cases;
    for (const OptionRow& row : optionTable()) {
        names.append(row.name);
        const bool isOptional = row.takes() == OptionRow::Takes::valueOrNothing;
        if (row.takesFile())
            cases += bashCase(row, u"-f"_qs);
        else if (row.takes() != OptionRow::Takes::nothing)
            cases += bashCase(
                row, u"-W \"%1%2\""_qs.arg(row.offers, QLatin1String(isOptional ? " $options" : "")));
    }
    return licence + u"# bash completion for zofrazofra\n"
                     u"_zofrazofra() {\n"
                     u"    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}\n"
                     u"    local options=\"%1\"\n"
                     u"    case $previous in\n"
                     u"%2"
                     u"    *) mapfile -t COMPREPLY < <(compgen -W \"$options\" -- \"$current\") ;;\n"
                     u"    esac\n"
                     u"}\n"
                     u"complete -F _zofrazofra zofrazofra\n"_qs.arg(names.join(u' '), cases);
}

QString zshCompletion() {
    QStringList lines{u"_arguments"_qs};
    for (const OptionRow& row : optionTable()) {
        QString text = u"%1[%2]"_qs.arg(row.name, row.help.in(AppLanguage::en));
        if (row.takes() != OptionRow::Takes::nothing) {
            const QString offer = row.takesFile()        ? u"_files"_qs
                                  : row.offers.isEmpty() ? u" "_qs
                                                         : u"(%1)"_qs.arg(row.offers);
            const bool isOptional = row.takes() == OptionRow::Takes::valueOrNothing;
            text += u"%1:value:%2"_qs.arg(QLatin1String(isOptional ? ":" : ""), offer);
        }
        lines.append(quoted(text));
    }
    return u"#compdef zofrazofra\n"_qs + licence + lines.join(u" \\\n  "_qs) + u'\n';
}

QString fishCompletion() {
    QString text = licence + u"complete -c zofrazofra -f\n"_qs;
    for (const OptionRow& row : optionTable()) {
        text += u"complete -c zofrazofra -l "_qs + QString(row.name).mid(2);
        if (row.takesFile())
            text += u" -rF"_qs;
        else if (row.takes() == OptionRow::Takes::value)
            text += u" -x"_qs;
        if (!row.offers.isEmpty())
            text += u" -a "_qs + quoted(row.offers);
        text += u" -d %1\n"_qs.arg(quoted(row.help.in(AppLanguage::en)));
    }
    return text;
}

QString manualOptions() {
    QString text;
    for (const OptionRow& row : optionTable()) {
        QString help = row.help.in(AppLanguage::en);
        help[0] = help[0].toUpper();
        text += u".TP\n.B %1\n%2.\n"_qs.arg(roff(row.usage()), roff(help));
        if (!row.manual.isEmpty())
            text += row.manual + u'\n';
    }
    return text;
}

} // namespace zofra
