// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/StateFile.h"

#include "platform/RegularFile.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

#include <mutex>
#include <optional>
#include <utility>

namespace zofra {

namespace {

constexpr auto ownersOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner;

/// What went wrong, or nothing.
std::optional<QString> replace(const QString& path, const QByteArray& content) {
    const QString folder = QFileInfo(path).path();
    QSaveFile file(path);
    if (QDir().mkpath(folder) && file.open(QIODevice::WriteOnly) && file.setPermissions(ownersOnly) &&
        file.write(content) == content.size() && file.commit())
        return std::nullopt;
    return QStringLiteral("%1 could not be written: %2").arg(path, file.errorString());
}

} // namespace

struct StateFile::Pending {
    SystemLog& log;
    std::mutex mutex;
    std::optional<QByteArray> content;
    bool isWriting = false;
};

StateFile::StateFile(QString path, qint64 maxBytes, TaskPool& pool, SystemLog& log)
    : m_path(std::move(path))
    , m_maxBytes(maxBytes)
    , m_pool(pool)
    , m_pending(new Pending{log, {}, {}, false}) {}

QByteArray StateFile::read() {
    const auto content = readRegularFile(m_path, m_maxBytes);
    return content ? content->value_or(QByteArray()) : QByteArray();
}

void StateFile::write(const QByteArray& content) {
    const std::lock_guard lock(m_pending->mutex);
    m_pending->content = content;
    if (std::exchange(m_pending->isWriting, true))
        return;
    m_pool.async([path = m_path, pending = m_pending] {
        for (;;) {
            std::unique_lock taking(pending->mutex);
            const auto newest = std::exchange(pending->content, std::nullopt);
            if (!newest) {
                pending->isWriting = false;
                return;
            }
            taking.unlock();
            if (const auto problem = replace(path, *newest))
                pending->log.log(*problem);
        }
    });
}

} // namespace zofra
