// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Options.h"

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
    explicit Reader(const QStringList& arguments)
        : m_arguments(arguments) {}

    std::variant<Options, QString> read() {
        while (m_next < m_arguments.size() && m_refusal.isEmpty())
            readOne();
        if (m_refusal.isEmpty())
            check();
        if (!m_refusal.isEmpty())
            return m_refusal;
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
            refuse(QStringLiteral("unknown option %1 (see --help)").arg(name));
        else if (value)
            refuse(QStringLiteral("%1 takes no value").arg(name));
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
            refuse(QStringLiteral("--play: no station \"%1\"; there are %2").arg(*value, stationList()));
    }

    QString required(const QString& name, const std::optional<QString>& value) {
        QString text = value.value_or(QString());
        if (!value && m_next < m_arguments.size() && !m_arguments.at(m_next).startsWith(QLatin1String("--")))
            text = m_arguments.at(m_next++);
        if (text.isEmpty())
            refuse(QStringLiteral("%1 needs a value").arg(name));
        return text;
    }

    void take(Options::Task task) {
        if (m_options.task == Options::Task::run || task == Options::Task::help)
            m_options.task = task;
        else if (m_options.task != task && m_options.task != Options::Task::help)
            refuse(QStringLiteral("only one of --version, --status, --doctor and --quit can be asked for"));
    }

    void check() {
        using Task = Options::Task;
        Task& task = m_options.task;
        if (m_isJson && task == Task::status)
            task = Task::statusJson;
        else if (m_isJson && task == Task::doctor)
            task = Task::doctorJson;
        else if (m_isJson && task != Task::help)
            refuse(QStringLiteral("--json goes with --status or --doctor"));
        const bool acts = m_options.play || m_options.output;
        if ((task == Task::doctor || task == Task::doctorJson) && acts)
            refuse(
                QStringLiteral("--doctor goes with --json, --endpoints, --no-discovery and --headless only"));
        if ((task == Task::status || task == Task::statusJson || task == Task::quit) &&
            (acts || !m_options.firstStartOnly().isEmpty()))
            refuse(QStringLiteral("--status and --quit go with no other option"));
    }

    void refuse(const QString& why) {
        if (m_refusal.isEmpty())
            m_refusal = why;
    }

    const QStringList& m_arguments;
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

std::variant<Options, QString> parseOptions(const QStringList& arguments) {
    return Reader(arguments).read();
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
