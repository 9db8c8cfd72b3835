// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/SettingsFindings.h"
#include "platform/linux/IniFile.h"

#include <QFile>
#include <QFileInfo>

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
    for (int i = 0; i < 64 && !QFileInfo::exists(folder) && folder != QLatin1String("/"); ++i)
        folder = QFileInfo(folder).path();
    return folder;
}

/// Writes so much to a file without a name, which is gone when it is closed.
QString mistakeInWriting(const QString& folder, qsizetype bytes) {
    const int file = ::open(QFile::encodeName(folder).constData(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
    if (file < 0) {
        // Not every file system knows such files.
        const int error = errno;
        return error == EOPNOTSUPP || error == EISDIR || error == EINVAL ? QString() : reason(error);
    }
    int error = 0;
    const QByteArray block(4096, ' ');
    for (qsizetype done = 0; done < bytes && error == 0; done += block.size())
        error = ::write(file, block.constData(), static_cast<std::size_t>(block.size())) < 0 ? errno : 0;
    if (error == 0 && ::fsync(file) != 0)
        error = errno;
    ::close(file);
    return error == 0 ? QString() : reason(error);
}

QString mistakeInWritingTo(const QString& path) {
    struct stat status {};
    const auto name = QFile::encodeName(path);
    const bool exists = ::stat(name.constData(), &status) == 0;
    if (exists && ((status.st_mode & 0222) == 0 || ::access(name.constData(), W_OK) != 0))
        return QStringLiteral("it is read-only");
    // A link is followed: the file is replaced where it really is.
    const QFileInfo info(path);
    const QString target = exists && info.isSymLink() ? info.canonicalFilePath() : path;
    return mistakeInWriting(nearestFolder(target), exists ? status.st_size + trialBytes : trialBytes);
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

} // namespace zofra::doctor
