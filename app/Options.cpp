// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Options.h"

#include "platform/ForeignText.h"
#include "stations/texts/CommandTexts.h"

namespace zofra {

namespace {

QString stationList() {
    QStringList names;
    for (const RadioStation station : RadioStation::allCases)
        names.append(station.rawValue());
    return names.join(QStringLiteral(", "));
}

/// Reads one argument after the other; `refusal` is set once something is wrong.
class Reader {
public:
    Reader(const QStringList& arguments, AppLanguage language)
        : m_arguments(arguments)
        , m_language(language) {}

    Result<Options> read() {
        while (m_next < m_arguments.size() && m_refusal.isEmpty())
            readOne();
        if (m_refusal.isEmpty())
            check();
        if (!m_refusal.isEmpty())
            return failure(m_refusal);
        return m_options;
    }

private:
    void readOne() {
        QString name = m_arguments.at(m_next++);
        std::optional<QString> value;
        const qsizetype equals = name.startsWith(QLatin1String("--")) ? name.indexOf(QLatin1Char('=')) : -1;
        if (equals > 0) {
            value = name.mid(equals + 1);
            name.truncate(equals);
        }
        if (name == QLatin1String("--play"))
            readPlay(value);
        else if (name == QLatin1String("--output"))
            m_options.output = required(name, value);
        else if (name == QLatin1String("--endpoints"))
            m_options.endpointsFile = required(name, value);
        else if (!readFlag(name))
            refuse(texts::command::unknownOption, name);
        else if (value)
            refuse(texts::command::takesNoValue, name);
    }

    bool readFlag(const QString& name) {
        if (name == QLatin1String("--no-discovery"))
            m_options.noDiscovery = true;
        else if (name == QLatin1String("--headless"))
            m_options.headless = true;
        else if (name == QLatin1String("--json"))
            m_isJson = true;
        else if (name == QLatin1String("--help") || name == QLatin1String("-h"))
            take(Options::Task::help);
        else if (name == QLatin1String("--version"))
            take(Options::Task::version);
        else if (name == QLatin1String("--status"))
            take(Options::Task::status);
        else if (name == QLatin1String("--doctor"))
            take(Options::Task::doctor);
        else if (name == QLatin1String("--quit"))
            take(Options::Task::quit);
        else
            return false;
        return true;
    }

    void readPlay(std::optional<QString> value) {
        m_options.play = true;
        if (!value && m_next < m_arguments.size() && !m_arguments.at(m_next).startsWith(QLatin1Char('-')))
            value = m_arguments.at(m_next++);
        if (!value)
            return;
        m_options.station = stationNamed(*value);
        if (!m_options.station)
            refuse(texts::command::noSuchStation, QStringLiteral("--play"), *value, stationList());
    }

    QString required(const QString& name, const std::optional<QString>& value) {
        QString text = value.value_or(QString());
        if (!value && m_next < m_arguments.size() && !m_arguments.at(m_next).startsWith(QLatin1String("--")))
            text = m_arguments.at(m_next++);
        if (text.isEmpty())
            refuse(texts::command::needsValue, name);
        return text;
    }

    void take(Options::Task task) {
        if (m_options.task == Options::Task::run || task == Options::Task::help)
            m_options.task = task;
        else if (m_options.task != task && m_options.task != Options::Task::help)
            refuse(texts::command::onlyOneOf, list({QStringLiteral("--version"), QStringLiteral("--status"),
                                                    QStringLiteral("--doctor"), QStringLiteral("--quit")},
                                                   texts::command::and_));
    }

    void check() {
        using Task = Options::Task;
        Task& task = m_options.task;
        if (m_isJson && task == Task::status)
            task = Task::statusJson;
        else if (m_isJson && task == Task::doctor)
            task = Task::doctorJson;
        else if (m_isJson && task != Task::help)
            refuse(texts::command::goesWith, QStringLiteral("--json"),
                   list({QStringLiteral("--status"), QStringLiteral("--doctor")}, texts::command::or_));
        const bool acts = m_options.play || m_options.output;
        if ((task == Task::doctor || task == Task::doctorJson) && acts)
            refuse(texts::command::goesOnlyWith, QStringLiteral("--doctor"),
                   list({QStringLiteral("--json"), QStringLiteral("--endpoints"),
                         QStringLiteral("--no-discovery"), QStringLiteral("--headless")},
                        texts::command::and_));
        if ((task == Task::status || task == Task::statusJson || task == Task::quit) &&
            (acts || !m_options.firstStartOnly().isEmpty()))
            refuse(texts::command::goesWithNothing,
                   list({QStringLiteral("--status"), QStringLiteral("--quit")}, texts::command::and_));
    }

    /// "a, b and c".
    [[nodiscard]] QString list(const QStringList& names, const Text& joint) const {
        const auto most = names.first(names.size() - 1).join(QStringLiteral(", "));
        return joint.in(m_language, most, names.last());
    }

    template<typename... Values>
    void refuse(const Text& why, const Values&... values) {
        if (m_refusal.isEmpty())
            m_refusal = visibleText(why.in(m_language, values...));
    }

    const QStringList& m_arguments;
    const AppLanguage m_language;
    qsizetype m_next = 0;
    Options m_options;
    bool m_isJson = false;
    QString m_refusal;
};

} // namespace

QStringList Options::firstStartOnly() const {
    QStringList names;
    if (endpointsFile)
        names.append(QStringLiteral("--endpoints"));
    if (noDiscovery)
        names.append(QStringLiteral("--no-discovery"));
    if (headless)
        names.append(QStringLiteral("--headless"));
    return names;
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

QString helpText() {
    return QStringLiteral(
               "Usage: zofrazofra [OPTIONS]\n"
               "A radio in the status bar. A second start hands its options to the running one;\n"
               "without options it shows the panel.\n"
               "\n"
               "  --play [STATION]                 start playing, the given station if there is one\n"
               "  --output here|everywhere|ROOM    where the sound goes; a room by title or id\n"
               "  --endpoints FILE                 service hosts over those of system and user (first "
               "start)\n"
               "  --no-discovery                   do not look for networked speakers by itself (first "
               "start)\n"
               "  --headless                       no status item, no window; changes go to standard output\n"
               "                                   (first start)\n"
               "  --status [--json]                print the state of the running program\n"
               "  --doctor [--json]                say what works, what does not, and what to do about it;\n"
               "                                   goes with --endpoints, --no-discovery and --headless\n"
               "  --quit                           end the running program\n"
               "  --version                        print the version\n"
               "  --help                           print this text\n"
               "\n"
               "Stations: %1.\n"
               "Exit status: 0 fine, 1 failed at run time or a problem found, 2 bad option or bad endpoints "
               "file.")
        .arg(stationList());
}

} // namespace zofra
