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
    void readOne() {
        m_name = m_arguments.at(m_next++);
        m_value.reset();
        const qsizetype equals = m_name.startsWith(u"--") ? m_name.indexOf(u'=') : -1;
        if (equals > 0) {
            m_value = m_name.mid(equals + 1);
            m_name.truncate(equals);
        }
        if (m_name == u"-h")
            m_name = u"--help"_qs;
        const auto table = optionTable();
        const auto row = std::ranges::find_if(table, [&](const auto& one) { return one.name == m_name; });
        if (row == table.end())
            refuse(text::unknownOption, m_name);
        else if (row->takes() == OptionRow::Takes::nothing && m_value)
            refuse(text::takesNoValue, m_name);
        else if (findValue(row->takes()))
            std::visit([this](const auto meaning) { take(meaning); }, row->meaning);
    }

    /// Takes the next argument for the value where one is missing; false where there is none.
    [[nodiscard]] bool findValue(OptionRow::Takes takes) {
        // What changes a volume begins with one dash, as single letters do.
        const QLatin1String option(takes == OptionRow::Takes::valueOrNothing ? "-" : "--");
        if (takes != OptionRow::Takes::nothing && !m_value && m_next < m_arguments.size() &&
            !m_arguments.at(m_next).startsWith(option))
            m_value = m_arguments.at(m_next++);
        const bool isMissing = takes == OptionRow::Takes::value && m_value.value_or(QString()).isEmpty();
        if (isMissing)
            refuse(text::needsValue, m_name);
        return !isMissing;
    }

    void take(bool Options::*flag) { m_options.*flag = true; }

    void take(std::optional<QString> Options::*text) { m_options.*text = m_value; }

    void take(Special special) {
        const QString value = m_value.value_or(QString());
        switch (special) {
        case Special::play:
            take(Options::Playback::play);
            if (m_value)
                takeStationName(value);
            break;
        case Special::station:
            if (value == u"next")
                m_options.stationStep = Options::StationStep::next;
            else if (value == u"previous")
                m_options.stationStep = Options::StationStep::previous;
            else
                takeStationName(value);
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
                refuse(text::onOrOff, m_name, value);
            break;
        }
    }

    void takeStationName(const QString& value) {
        m_options.station = stationNamed(value);
        if (!m_options.station)
            refuse(text::noSuchStation, m_name, value, stationNames().join(u", "_qs));
    }

    void take(Options::Playback playback) {
        if (m_options.playback != Options::Playback::leave && m_options.playback != playback)
            refuse(text::onlyOneOf, u"--play, --stop, --toggle"_qs);
        m_options.playback = playback;
    }

    void take(Options::Task task) {
        if (m_options.task == Options::Task::run || task == Options::Task::help)
            m_options.task = task;
        else if (m_options.task != task && m_options.task != Options::Task::help)
            refuse(text::onlyOneOf, u"--version, --status, --song, --follow, --history, --doctor, --quit"_qs);
    }

    void check() {
        using enum Options::Task;
        const auto task = m_options.task;
        const bool canBeJson = task == status || task == follow || task == history || task == doctor;
        if (m_options.isJson && !canBeJson)
            refuse(text::goesWith, u"--json"_qs, u"--status, --follow, --history, --doctor"_qs);
        if (task == run || task == version)
            return;
        if (task == doctor && m_options.acts())
            refuse(text::goesOnlyWith, u"--doctor"_qs, u"--json, --endpoints, --no-discovery, --headless"_qs);
        else if (task != doctor && (m_options.acts() || !m_options.firstStartOnly().isEmpty()))
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
    /// The option that is being read.
    QString m_name;
    std::optional<QString> m_value;
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
