// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Options.h"

#include "app/OptionTable.h"
#include "platform/ForeignText.h"
#include "stations/texts/CommandTexts.h"

#include <QRegularExpression>

#include <algorithm>

namespace zofra {

namespace {

namespace text = texts::command;
using Special = OptionRow::Special;

/// Reads one argument after the other; `refusal` is set once something is wrong.
class Reader {
public:
    Reader(const QStringList& arguments, AppLanguage language)
        : m_arguments(arguments)
        , m_language(language) {}

    Result<Options> read() {
        while (m_next < m_arguments.size() && m_refusal.isEmpty())
            readOne();
        if (m_refusal.isEmpty() && m_options.task != Options::Task::help)
            check();
        if (!m_refusal.isEmpty())
            return failure(m_refusal);
        m_options.language = m_language;
        return m_options;
    }

private:
    struct Given {
        QString name;
        std::optional<QString> value;
    };

    void readOne() {
        QString name = m_arguments.at(m_next++);
        std::optional<QString> value;
        const qsizetype equals = name.startsWith(u"--") ? name.indexOf(u'=') : -1;
        if (equals > 0) {
            value = name.mid(equals + 1);
            name.truncate(equals);
        }
        if (name == u"-h")
            name = u"--help"_qs;
        const auto table = optionTable();
        const auto row = std::ranges::find_if(table, [&](const auto& one) { return one.name == name; });
        if (row == table.end())
            refuse(text::unknownOption, name);
        else if (row->takes() == OptionRow::Takes::nothing && value)
            refuse(text::takesNoValue, name);
        else if (const auto taken = valueFor(*row, value); m_refusal.isEmpty())
            take(*row, taken);
    }

    std::optional<QString> valueFor(const OptionRow& row, std::optional<QString> value) {
        // What changes a volume begins with one dash, as single letters do.
        const QLatin1String option(row.takes() == OptionRow::Takes::valueOrNothing ? "-" : "--");
        if (row.takes() != OptionRow::Takes::nothing && !value && m_next < m_arguments.size() &&
            !m_arguments.at(m_next).startsWith(option))
            value = m_arguments.at(m_next++);
        if (row.takes() == OptionRow::Takes::value && value.value_or(QString()).isEmpty())
            refuse(text::needsValue, row.name);
        return value;
    }

    void take(const OptionRow& row, const std::optional<QString>& value) {
        std::visit([&](const auto meaning) { take(meaning, {row.name, value}); }, row.meaning);
    }

    void take(bool Options::*flag, const Given&) { m_options.*flag = true; }

    void take(std::optional<QString> Options::*text, const Given& given) { m_options.*text = given.value; }

    void take(Special special, const Given& given) {
        const QString value = given.value.value_or(QString());
        switch (special) {
        case Special::play:
            take(Options::Playback::play, given);
            if (given.value)
                takeStationName(given.name, value);
            break;
        case Special::station:
            takeStation(given.name, value);
            break;
        case Special::volume:
            m_options.volume = volumeNamed(value);
            if (!m_options.volume)
                refuse(text::badVolume, value);
            break;
        case Special::stopIn:
            m_options.stopIn = durationNamed(value);
            if (!m_options.stopIn)
                refuse(text::badTime, value);
            break;
        case Special::notify:
            m_options.notify = switchNamed(value);
            if (!m_options.notify)
                refuse(text::onOrOff, given.name, value);
            break;
        }
    }

    void takeStation(const QString& name, const QString& value) {
        if (value == u"next")
            m_options.stationStep = Options::StationStep::next;
        else if (value == u"previous")
            m_options.stationStep = Options::StationStep::previous;
        else
            takeStationName(name, value);
    }

    void takeStationName(const QString& name, const QString& value) {
        m_options.station = stationNamed(value);
        if (!m_options.station)
            refuse(text::noSuchStation, name, value, stationNames().join(u", "_qs));
    }

    void take(Options::Playback playback, const Given&) {
        if (m_options.playback != Options::Playback::leave && m_options.playback != playback)
            refuse(text::onlyOneOf, u"--play, --stop, --toggle"_qs);
        m_options.playback = playback;
    }

    void take(Options::Task task, const Given&) {
        if (m_options.task == Options::Task::run || task == Options::Task::help)
            m_options.task = task;
        else if (m_options.task != task && m_options.task != Options::Task::help)
            refuse(text::onlyOneOf, u"--version, --status, --song, --follow, --history, --doctor, --quit"_qs);
    }

    void check() {
        using Task = Options::Task;
        const Task task = m_options.task;
        const bool canBeJson =
            task == Task::status || task == Task::follow || task == Task::history || task == Task::doctor;
        if (m_options.isJson && !canBeJson)
            refuse(text::goesWith, u"--json"_qs, u"--status, --follow, --history, --doctor"_qs);
        if (task == Task::run || task == Task::version)
            return;
        if (task == Task::doctor && m_options.acts())
            refuse(text::goesOnlyWith, u"--doctor"_qs, u"--json, --endpoints, --no-discovery, --headless"_qs);
        else if (task != Task::doctor && (m_options.acts() || !m_options.firstStartOnly().isEmpty()))
            refuse(text::goesWithNothing, u"--status, --song, --follow, --history, --quit"_qs);
    }

    template<typename... Values>
    void refuse(const Text& why, const Values&... values) {
        if (m_refusal.isEmpty())
            m_refusal = why.in(m_language, visibleText(values)...);
    }

    const QStringList& m_arguments;
    AppLanguage m_language;
    qsizetype m_next = 0;
    Options m_options;
    QString m_refusal;
};

} // namespace

QStringList Options::firstStartOnly() const {
    QStringList names;
    if (endpointsFile)
        names.append(u"--endpoints"_qs);
    if (noDiscovery)
        names.append(u"--no-discovery"_qs);
    if (headless)
        names.append(u"--headless"_qs);
    return names;
}

bool Options::acts() const {
    return playback != Playback::leave || station || stationStep != StationStep::none || output || volume ||
           stopIn || notify;
}

bool Options::needsRunning() const {
    return task == Task::run && acts() && playback != Playback::play && !output && firstStartOnly().isEmpty();
}

Result<Options> parseOptions(const QStringList& arguments, AppLanguage language) {
    return Reader(arguments, language).read();
}

std::optional<RadioStation> stationNamed(const QString& text) {
    if (const auto station = RadioStation::fromRawValue(text))
        return station;
    std::optional<RadioStation> beginning;
    bool isAmbiguous = false;
    for (const RadioStation station : RadioStation::allCases) {
        const QString name = station.displayName();
        if (name.compare(text, Qt::CaseInsensitive) == 0)
            return station;
        if (text.isEmpty() || !name.startsWith(text, Qt::CaseInsensitive))
            continue;
        isAmbiguous = beginning.has_value();
        beginning = station;
    }
    return isAmbiguous ? std::nullopt : beginning;
}

std::optional<Options::Volume> volumeNamed(const QString& text) {
    static const QRegularExpression form(u"^([+-]?)([0-9]{1,3})%?$"_qs);
    const auto match = form.match(text);
    const int percent = match.captured(2).toInt();
    if (!match.hasMatch() || percent > 100)
        return std::nullopt;
    const QString sign = match.captured(1);
    return Options::Volume{sign.isEmpty() ? Options::Volume::Kind::absolute : Options::Volume::Kind::change,
                           sign == u"-" ? -percent : percent};
}

std::optional<bool> switchNamed(const QString& text) {
    const bool isOn = text == u"on";
    return isOn || text == u"off" ? std::optional(isOn) : std::nullopt;
}

std::optional<std::chrono::seconds> durationNamed(const QString& text) {
    using namespace std::chrono;
    if (text == u"off")
        return seconds(0);
    // A bare number counts minutes.
    static const QRegularExpression form(
        u"^(?:([0-9]{1,2})h)?(?:([0-9]{1,4})(?:m|$))?(?:([0-9]{1,5})s)?$"_qs);
    const auto match = form.match(text);
    const seconds time = hours(match.captured(1).toInt()) + minutes(match.captured(2).toInt()) +
                         seconds(match.captured(3).toInt());
    if (!match.hasMatch() || time == seconds(0) || time > hours(24))
        return std::nullopt;
    return time;
}

} // namespace zofra
