// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/IniFile.h"

#include "platform/RegularFile.h"

#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QSaveFile>

#include <cerrno>
#include <unistd.h>

namespace zofra::inifile {
namespace {

constexpr auto ownerOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner;

/// Makes the missing folders, private to the user.
Result<void> makeFolder(const QString& folder) {
    const QFileInfo info(folder);
    if (info.isDir())
        return {};
    if (info.path() != folder) {
        if (auto made = makeFolder(info.path()); !made)
            return made;
    }
    if (!QDir().mkdir(folder, ownerOnly | QFileDevice::ExeOwner) && !QFileInfo::exists(folder))
        return failure(qt_error_string(errno));
    return {};
}

/// Replaces the file in one step, or makes it; it is complete or as it was. A link is followed.
Result<void> save(const QString& path, const QByteArray& bytes) {
    if (bytes.size() > maxFileBytes)
        return failure(u"it would be too large"_qs);
    // Replacing a file needs no right to write it, but whoever took that right away meant it.
    constexpr auto anyonesRight = QFileDevice::WriteOwner | QFileDevice::WriteGroup | QFileDevice::WriteOther;
    const QFileInfo present(path);
    if (present.exists() && (!present.isWritable() || !(present.permissions() & anyonesRight)))
        return failure(u"it is read-only"_qs);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return failure(file.errorString());
    if (!present.exists())
        file.setPermissions(ownerOnly);
    // The system's own words: the toolkit has none where a part was written.
    if (file.write(bytes) < 0 || !file.flush() || ::fsync(file.handle()) != 0)
        return failure(qt_error_string(errno));
    return file.commit() ? Result<void>() : failure(file.errorString());
}

/// Keeps `bytes` under the first free name beside the file, or under one that holds just these already.
Result<QString> keepDamaged(const QString& path, const QByteArray& bytes) {
    for (int i = 1; i <= maxDamagedCopies; ++i) {
        const QString copy = path + u".damaged"_qs + (i > 1 ? u'-' + QString::number(i) : QString());
        const auto present = readRegularFile(copy, bytes.size() + 1);
        if (present && *present == bytes)
            return copy;
        if (!present || *present)
            continue;
        if (const auto kept = save(copy, bytes); !kept)
            return failure(u"it is damaged and no copy of it can be kept: "_qs + kept.error());
        return copy;
    }
    return failure(u"it is damaged and there are too many copies of it already"_qs);
}

/// The file with `values` in it.
struct Change {
    Merged merged;
    /// Whether it says something else as yet.
    bool isNeeded = false;
    /// The whole file as it is, when it is damaged.
    QByteArray damaged;
};

Result<Change> changed(const QString& path, const QMap<QByteArray, QByteArray>& values) {
    return read(path).map([&](const IniDocument& read) {
        Change change{{read, {}}, read.isDamaged(), {}};
        auto& document = change.merged.document;
        if (read.isDamaged()) {
            change.damaged = read.bytes();
            document.dropDamage();
        }
        for (const auto& [key, value] : values.asKeyValueRange()) {
            if (document.value(key) == value)
                continue;
            document.setValue(key, value);
            change.isNeeded = true;
        }
        return change;
    });
}

} // namespace

Result<IniDocument> read(const QString& path) {
    const auto bytes = readRegularFile(path, maxFileBytes + 1);
    if (!bytes)
        return failure(bytes.error());
    if (*bytes && (*bytes)->size() > maxFileBytes)
        return failure(u"it is too large"_qs);
    return IniDocument(bytes->value_or(QByteArray()));
}

Result<Merged> merge(const QString& path, const QMap<QByteArray, QByteArray>& values,
                     std::chrono::milliseconds lockWait) {
    // A file is replaced in one step, so it can be looked at without the lock.
    if (auto change = changed(path, values); change && !change->isNeeded)
        return change->merged;
    const QFileInfo info(path);
    if (auto made = makeFolder(info.path()); !made)
        return failure(made.error());
    QLockFile lock(info.path() + u"/."_qs + info.fileName() + u".lock"_qs);
    // Where no lock can be made, none is held; why not is told by the writing.
    if (!lock.tryLock(static_cast<int>(lockWait.count())) && lock.error() == QLockFile::LockFailedError)
        return failure(u"another program holds its lock"_qs);
    auto change = changed(path, values);
    if (!change)
        return failure(change.error());
    // Links are followed: people keep such files elsewhere.
    const auto target = info.exists() ? info.canonicalFilePath() : path;
    if (!change->damaged.isEmpty()) {
        auto kept = keepDamaged(target, change->damaged);
        if (!kept)
            return failure(kept.error());
        change->merged.keptAs = *kept;
    }
    if (change->isNeeded) {
        if (const auto saved = save(target, change->merged.document.bytes()); !saved)
            return failure(saved.error());
    }
    return change->merged;
}

} // namespace zofra::inifile
