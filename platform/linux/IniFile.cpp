// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/IniFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace zofra::inifile {
namespace {

using namespace std::chrono_literals;

Problem problem(int error) {
    return {QString::fromStdString(std::generic_category().message(error))};
}

class Descriptor {
public:
    explicit Descriptor(int descriptor)
        : m_descriptor(descriptor) {}
    ~Descriptor() {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    [[nodiscard]] int get() const { return m_descriptor; }
    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }

private:
    int m_descriptor;
};

/// Where a link, or a chain of them, leads; people keep such files elsewhere and link them.
QString followed(const QString& path) {
    QFileInfo info(path);
    for (int i = 0; i < 8 && info.isSymLink(); ++i)
        info.setFile(info.symLinkTarget());
    return info.absoluteFilePath();
}

/// Makes the missing folders, private to the user.
std::optional<Problem> makeFolder(const QString& folder) {
    const QFileInfo info(folder);
    if (info.isDir())
        return std::nullopt;
    if (info.path() != folder) {
        if (auto failure = makeFolder(info.path()))
            return failure;
    }
    if (::mkdir(QFile::encodeName(folder).constData(), 0700) != 0 && errno != EEXIST)
        return problem(errno);
    return std::nullopt;
}

/// Waits for the lock. A file system that knows no locks is used without.
std::optional<Problem> lock(int descriptor, std::chrono::milliseconds limit) {
    for (auto waited = 0ms;; waited += 10ms) {
        if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0 || (errno != EWOULDBLOCK && errno != EINTR))
            return std::nullopt;
        if (waited >= limit)
            return Problem{QStringLiteral("another program holds its lock")};
        std::this_thread::sleep_for(10ms);
    }
}

std::optional<Problem> writeAll(int descriptor, const QByteArray& bytes) {
    for (qsizetype at = 0; at < bytes.size();) {
        const auto written =
            ::write(descriptor, bytes.constData() + at, static_cast<std::size_t>(bytes.size() - at));
        if (written < 0 && errno != EINTR)
            return problem(errno);
        at += written > 0 ? written : 0;
    }
    return ::fsync(descriptor) == 0 ? std::nullopt : std::optional(problem(errno));
}

/// The mode of the file to be replaced, 0600 when there is none yet; a problem when it may not be written.
std::variant<mode_t, Problem> modeOfTarget(const QByteArray& target) {
    struct stat status {};
    if (::stat(target.constData(), &status) != 0)
        return errno == ENOENT ? std::variant<mode_t, Problem>(mode_t(0600)) : problem(errno);
    // Replacing a file needs no right to write it, but whoever took that right away meant it.
    if ((status.st_mode & 0222) == 0 || ::access(target.constData(), W_OK) != 0)
        return Problem{QStringLiteral("it is read-only")};
    return mode_t(status.st_mode & 07777);
}

/// Writes a file that is not there yet; it is complete or not there at all.
std::optional<Problem> writeNew(const QByteArray& name, const QByteArray& bytes, mode_t mode) {
    const Descriptor file(::open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file.isOpen())
        return problem(errno);
    auto failure = writeAll(file.get(), bytes);
    if (!failure && ::fchmod(file.get(), mode) != 0)
        failure = problem(errno);
    if (failure)
        ::unlink(name.constData());
    return failure;
}

std::optional<Problem> replace(const QString& path, const QByteArray& bytes, mode_t mode) {
    const auto target = QFile::encodeName(path);
    const QFileInfo info(path);
    const auto folder = QFile::encodeName(info.path());
    const auto temporary = folder + "/." + QFile::encodeName(info.fileName()) + ".new";
    ::unlink(temporary.constData()); // What a crash left.
    if (auto failure = writeNew(temporary, bytes, mode))
        return failure;
    if (::rename(temporary.constData(), target.constData()) != 0) {
        const auto failure = problem(errno);
        ::unlink(temporary.constData());
        return failure;
    }
    const Descriptor directory(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.isOpen())
        ::fsync(directory.get());
    return std::nullopt;
}

/// Keeps `bytes` under the first free name beside the file, or under one that holds just these already.
std::variant<QString, Problem> keepDamaged(const QString& path, const QByteArray& bytes) {
    for (int i = 1; i <= maxDamagedCopies; ++i) {
        const QString copy =
            path + QStringLiteral(".damaged") + (i > 1 ? u'-' + QString::number(i) : QString());
        QFile present(copy);
        if (present.exists()) {
            if (present.size() == bytes.size() && present.open(QIODevice::ReadOnly) &&
                present.readAll() == bytes)
                return copy;
            continue;
        }
        if (const auto failure = writeNew(QFile::encodeName(copy), bytes, 0600))
            return Problem{QStringLiteral("it is damaged and no copy of it can be kept: ") + failure->reason};
        return copy;
    }
    return Problem{QStringLiteral("it is damaged and there are too many copies of it already")};
}

} // namespace

std::variant<IniDocument, Problem> read(const QString& path) {
    const Descriptor file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.isOpen())
        return errno == ENOENT ? std::variant<IniDocument, Problem>(IniDocument()) : problem(errno);
    struct stat status {};
    if (::fstat(file.get(), &status) != 0)
        return problem(errno);
    if (!S_ISREG(status.st_mode))
        return Problem{QStringLiteral("it is no file")};
    if (status.st_size > maxFileBytes)
        return Problem{QStringLiteral("it is too large")};
    QByteArray bytes(status.st_size, '\0');
    for (qsizetype at = 0;;) {
        const auto count = ::read(file.get(), bytes.data() + at, static_cast<std::size_t>(bytes.size() - at));
        if (count < 0 && errno != EINTR)
            return problem(errno);
        at += count > 0 ? count : 0;
        if (count == 0 || at == bytes.size()) {
            bytes.truncate(at);
            return IniDocument(bytes);
        }
    }
}

std::variant<Merged, Problem> merge(const QString& path, const QHash<QByteArray, QByteArray>& values,
                                    std::chrono::milliseconds lockWait) {
    const QFileInfo info(path);
    if (auto failure = makeFolder(info.path()))
        return *failure;
    const auto lockPath = QFile::encodeName(info.path() + QStringLiteral("/.") + info.fileName()) + ".lock";
    const Descriptor lockFile(::open(lockPath.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!lockFile.isOpen())
        return problem(errno);
    if (auto failure = lock(lockFile.get(), lockWait))
        return *failure;

    const auto target = followed(path);
    auto current = read(target);
    if (const auto* failure = std::get_if<Problem>(&current))
        return *failure;
    const auto mode = modeOfTarget(QFile::encodeName(target));
    if (const auto* failure = std::get_if<Problem>(&mode))
        return *failure;
    Merged merged{std::move(std::get<IniDocument>(current)), {}};
    if (merged.document.isDamaged()) {
        const auto kept = keepDamaged(target, merged.document.bytes());
        if (const auto* failure = std::get_if<Problem>(&kept))
            return *failure;
        merged.keptAs = std::get<QString>(kept);
        merged.document.dropDamage();
    }
    auto keys = values.keys();
    std::sort(keys.begin(), keys.end());
    for (const auto& key : keys)
        merged.document.setValue(key, values.value(key));
    if (auto failure = replace(target, merged.document.bytes(), std::get<mode_t>(mode)))
        return *failure;
    return merged;
}

} // namespace zofra::inifile
