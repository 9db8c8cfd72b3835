// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/OwnFile.h"
#include "platform/RegularFile.h"
#include "platform/SystemLog.h"
#include "platform/TaskPool.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QString>

#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace zofra {

/// A file of the user's, written in the background: the latest content, and nobody else may read it. A write
/// that fails is one line of the log.
class StateFile final : public OwnFile {
public:
    /// `pool` and `log` outlive it and what is still being written.
    StateFile(QString path, qint64 maxBytes, TaskPool& pool, SystemLog& log)
        : m_path(std::move(path))
        , m_maxBytes(maxBytes)
        , m_pool(pool)
        , m_pending(new Pending{log, {}, {}, false}) {}

    [[nodiscard]] QByteArray read() override {
        const auto content = readRegularFile(m_path, m_maxBytes);
        return content ? content->value_or(QByteArray()) : QByteArray();
    }
    void write(const QByteArray& content) override {
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
                replace(path, *newest, pending->log);
            }
        });
    }

private:
    struct Pending {
        SystemLog& log;
        std::mutex mutex;
        std::optional<QByteArray> content;
        bool isWriting = false;
    };

    static void replace(const QString& path, const QByteArray& content, SystemLog& log) {
        QSaveFile file(path);
        if (!QDir().mkpath(QFileInfo(path).path()) || !file.open(QIODevice::WriteOnly) ||
            !file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner) ||
            file.write(content) != content.size() || !file.commit())
            log.log(u"%1 could not be written: %2"_qs.arg(path, file.errorString()));
    }

    QString m_path;
    qint64 m_maxBytes;
    TaskPool& m_pool;
    std::shared_ptr<Pending> m_pending;
};

} // namespace zofra
