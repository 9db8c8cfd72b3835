// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/SettingsFindings.h"

#include "platform/linux/Descriptor.h"
#include "platform/linux/IniFile.h"
#include "stations/RadioStation.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace zofra::doctor {

namespace {

/// More than the settings will ever grow by at once.
constexpr qsizetype trialBytes = 65'536;

QString reason(int error) {
    return QString::fromStdString(std::generic_category().message(error));
}

/// The folder that would hold the file, or the first above it that is there.
QString nearestFolder(const QString& path) {
    QString folder = QFileInfo(path).absolutePath();
    for (int i = 0; i < 64 && !QFileInfo::exists(folder) && folder != u"/"; ++i)
        folder = QFileInfo(folder).path();
    return folder;
}

/// Writes so much to a file without a name, which is gone when it is closed.
QString mistakeInWriting(const QString& folder, qsizetype bytes) {
    const Descriptor file(
        ::open(QFile::encodeName(folder).constData(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600));
    if (!file.isOpen()) {
        // Not every file system knows such files.
        const int error = errno;
        return error == EOPNOTSUPP || error == EISDIR || error == EINVAL ? QString() : reason(error);
    }
    int error = 0;
    const QByteArray block(4096, ' ');
    for (qsizetype done = 0; done < bytes && error == 0; done += block.size())
        error =
            ::write(file.get(), block.constData(), static_cast<std::size_t>(block.size())) < 0 ? errno : 0;
    if (error == 0 && ::fsync(file.get()) != 0)
        error = errno;
    return error == 0 ? QString() : reason(error);
}

QString mistakeInWritingTo(const QString& path) {
    struct stat status {};
    const auto name = QFile::encodeName(path);
    const bool exists = ::stat(name.constData(), &status) == 0;
    if (exists && ((status.st_mode & 0222) == 0 || ::access(name.constData(), W_OK) != 0))
        return u"it is read-only"_qs;
    // A link is followed: the file is replaced where it really is.
    const QFileInfo info(path);
    const QString target = exists && info.isSymLink() ? info.canonicalFilePath() : path;
    return mistakeInWriting(nearestFolder(target), exists ? status.st_size + trialBytes : trialBytes);
}

const QString settingsArea = u"settings"_qs;

/// A path as a person writes it.
QString shortened(const QString& path) {
    const QString home = QDir::homePath() + u'/';
    return home.size() > 1 && path.startsWith(home) ? u"~/"_qs + path.mid(home.size()) : path;
}

bool isVolume(const QString& text) {
    bool isNumber = false;
    const float value = text.trimmed().toFloat(&isNumber);
    return isNumber && value >= 0.0F && value <= 1.0F;
}

bool isTrayMode(const QString& text) {
    return text == u"auto" || text == u"direct" || text == u"hostmenu";
}

/// Values that the program takes for none: "zofra_radio_volume = 7.5".
QStringList strangeValues(const SettingsFacts& facts) {
    QStringList strange;
    const auto look = [&strange](const char* key, const std::optional<QByteArray>& value, auto read) {
        constexpr qsizetype longest = 30;
        if (value && !read(QString::fromUtf8(*value)))
            strange.append(QString::fromLatin1(key) + u" = "_qs + QString::fromUtf8(value->left(longest)));
    };
    look("zofra_radio_volume", facts.volume, isVolume);
    look("zofra_selected_station", facts.station, RadioStation::fromRawValue);
    look("app_language", facts.language, appLanguageFromRawValue);
    look("tray/mode", facts.trayMode, isTrayMode);
    return strange;
}

QString writeCure(const SettingsFacts& facts, AppLanguage language) {
    const bool isFull = facts.writeProblem.contains(u"space left") || facts.writeProblem.contains(u"quota");
    return isFull ? text::makeRoom.in(language)
                  : text::makeWritable.in(language, shortened(QFileInfo(facts.path).absolutePath()));
}

} // namespace

SettingsFacts SettingsFacts::of(const QString& path) {
    SettingsFacts facts;
    facts.path = path;
    facts.exists = QFileInfo::exists(path) || QFileInfo(path).isSymLink();
    const auto document = inifile::read(path);
    if (!document) {
        facts.readProblem = document.error();
        return facts;
    }
    facts.isDamaged = document->isDamaged();
    facts.volume = document->value("zofra_radio_volume");
    facts.station = document->value("zofra_selected_station");
    facts.language = document->value("app_language");
    facts.trayMode = document->value("tray/mode");
    facts.writeProblem = mistakeInWritingTo(path);
    return facts;
}

Finding judgeSettings(const SettingsFacts& facts, AppLanguage language) {
    const QString path = shortened(facts.path);
    const QJsonObject details{
        {u"path"_qs, facts.path}, {u"exists"_qs, facts.exists}, {u"damaged"_qs, facts.isDamaged}};
    if (!facts.readProblem.isEmpty())
        return problem(settingsArea, text::cannotBeRead.in(language, path, facts.readProblem),
                       text::makeReadable.in(language, path), details);
    if (!facts.writeProblem.isEmpty())
        return problem(settingsArea, text::cannotBeWritten.in(language, path, facts.writeProblem),
                       writeCure(facts, language), details);
    if (facts.isDamaged)
        return problem(settingsArea, text::damaged.in(language, path), text::writeAnew.in(language), details);
    if (const auto strange = strangeValues(facts); !strange.isEmpty())
        return problem(settingsArea, text::notUsable.in(language, path, strange.join(u", "_qs)),
                       text::correctLines.in(language), details);
    return fine(settingsArea, facts.exists ? path : text::notThereYet.in(language, path), details);
}

Finding judgeEndpoints(const EndpointsFacts& facts, AppLanguage language) {
    const QJsonObject details{{u"files"_qs, QJsonArray::fromStringList(facts.files)}};
    if (!facts.refusal.isEmpty())
        return problem(Finding::endpointsArea, facts.refusal, text::correctLine.in(language), details);
    QStringList names;
    for (const auto& file : facts.files)
        names.append(shortened(file));
    return fine(Finding::endpointsArea,
                names.isEmpty() ? text::builtInHosts.in(language) : names.join(u", "_qs), details);
}

} // namespace zofra::doctor
