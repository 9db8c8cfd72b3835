// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/OptionTable.h"

#include "stations/RadioStation.h"
#include "stations/texts/CommandTexts.h"

#include <QStringList>

#include <array>

namespace zofra {

namespace {

namespace text = texts::command;
using Id = OptionRow::Id;
using Takes = OptionRow::Takes;
using Offers = OptionRow::Offers;

constexpr QLatin1String none;

OptionRow flag(Id id, const char* name, const Text& help, const char* manual = "") {
    return {id, QLatin1String(name), Takes::nothing, none, Offers::nothing, help, QLatin1String(manual)};
}

// NOLINTNEXTLINE(bugprone-easily-swappable-parameters): as they stand on the command line.
OptionRow valued(Id id, const char* name, const char* value, Offers offers, const Text& help,
                 const char* manual = "") {
    const bool isOptional = *value == '[';
    return {id,
            QLatin1String(name),
            isOptional ? Takes::valueOrNothing : Takes::value,
            QLatin1String(value),
            offers,
            help,
            QLatin1String(manual)};
}

const auto& rows() {
    static const std::array table{
        valued(Id::play, "--play", "[STATION]", Offers::stations, text::helpPlay),
        flag(Id::stop, "--stop", text::helpStop),
        flag(Id::toggle, "--toggle", text::helpToggle),
        valued(Id::station, "--station", "next|previous|NAME", Offers::stationsAndSteps, text::helpStation,
               "After the last station comes the first."),
        valued(Id::output, "--output", "here|everywhere|ROOM", Offers::outputs, text::helpOutput),
        valued(Id::volume, "--volume", "N|+N|-N", Offers::nothing, text::helpVolume,
               "The volume of this computer and, where the sound goes to rooms, theirs."),
        valued(Id::stopIn, "--stop-in", "TIME|off", Offers::nothing, text::helpStopIn,
               "Here and in rooms. What is left is among the fields of\n.BR \\-\\-status .\n"
               "A day at most; it is not remembered beyond the end of the program."),
        valued(Id::notify, "--notify", "on|off", Offers::onOrOff, text::helpNotify,
               "Remembered. Off until it is asked for."),
        flag(Id::song, "--song", text::helpSong),
        flag(Id::status, "--status", text::helpStatus),
        flag(Id::follow, "--follow", text::helpFollow,
             "Goes on when the program ends and starts again. With\n.B \\-\\-json\n"
             "each line is an object: text, tooltip, class (playing, buffering, stopped or off) and "
             "percentage "
             "(the volume)."),
        flag(Id::history, "--history", text::helpHistory,
             "The last 200, the newest last; see\n.B history\nbelow. The program need not run."),
        flag(Id::doctor, "--doctor", text::helpDoctor,
             "It looks at the session, the panel and the way the button is shown there, the session bus and "
             "the "
             "running program, sound,\nsettings, endpoints files, every service host, the local network and "
             "the "
             "players in it. Takes fifteen seconds at most,\nasks a running program for its state and leaves "
             "it "
             "alone otherwise, and needs neither a display nor a bus.\n"
             ".B \\-\\-no\\-discovery\nleaves out the search for players,\n"
             ".B \\-\\-endpoints\nadds a file of hosts, and\n"
             ".B \\-\\-headless\nleaves out display and panel. With\n"
             ".B \\-\\-json\nit is one object: version, status (ok or problem), problems (how many) and "
             "checks, "
             "each with area, status (ok, problem or\nskipped), text, cure and details."),
        flag(Id::quit, "--quit", text::helpQuit),
        valued(Id::endpoints, "--endpoints", "FILE", Offers::files, text::helpEndpoints),
        flag(Id::noDiscovery, "--no-discovery", text::helpNoDiscovery,
             "No room cache is kept either. The menu can still search."),
        flag(Id::headless, "--headless", text::helpHeadless, "The media bus and all options work."),
        flag(Id::json, "--json", text::helpJson),
        flag(Id::version, "--version", text::helpVersion),
        flag(Id::help, "--help", text::helpHelp)};
    return table;
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
    return rows();
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

} // namespace zofra
