// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Options.h"

#include "platform/ForeignText.h"
#include "stations/texts/CommandTexts.h"

#include <array>

namespace zofra {

namespace {

QString stationList() {
    QStringList names;
    for (const RadioStation station : RadioStation::allCases)
        names.append(station.rawValue());
    return names.join(QStringLiteral(", "));
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

QString helpText(AppLanguage language) {
    namespace say = texts::command;
    struct Row {
        const char* option;
        const Text& text;
    };
    const std::array rows{
        Row{"--play [STATION]", say::helpPlay},      Row{"--output here|everywhere|ROOM", say::helpOutput},
        Row{"--endpoints FILE", say::helpEndpoints}, Row{"--no-discovery", say::helpNoDiscovery},
        Row{"--headless", say::helpHeadless},        Row{"--status [--json]", say::helpStatus},
        Row{"--doctor [--json]", say::helpDoctor},   Row{"--quit", say::helpQuit},
        Row{"--version", say::helpVersion},          Row{"--help", say::helpHelp},
    };
    constexpr int textColumn = 35;
    QString help = say::usage.in(language) + u'\n' + wrapped({}, say::purpose.in(language)) + u'\n';
    for (const auto& row : rows) {
        const auto option = QStringLiteral("  ") + QString::fromLatin1(row.option);
        help += wrapped(option.leftJustified(textColumn), row.text.in(language));
    }
    help += u'\n' + say::helpStations.in(language, stationList()) + u'\n' +
            wrapped({}, say::helpExit.in(language));
    return help.trimmed();
}

} // namespace zofra
