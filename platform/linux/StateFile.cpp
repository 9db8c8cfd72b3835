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

Result<void> replace(const QString& path, const QByteArray& content) {
    QSaveFile file(path);
    if (QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
        file.setPermissions(ownersOnly) && file.write(content) == content.size() && file.commit())
        return {};
    return failure(QStringLiteral("%1 could not be written: %2").arg(path, file.errorString()));
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
            if (const auto replaced = replace(path, *newest); !replaced)
                pending->log.log(replaced.error());
        }
    });
}

} // namespace zofra
