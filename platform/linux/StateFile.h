// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/OwnFile.h"
#include "platform/SystemLog.h"
#include "platform/TaskPool.h"

#include <QString>

#include <memory>

namespace zofra {

/// A file of the user's, written in the background: the latest content, and nobody else may read it. A write
/// that fails is one line of the log.
class StateFile final : public OwnFile {
public:
    /// `pool` and `log` outlive it and what is still being written.
    StateFile(QString path, qint64 maxBytes, TaskPool& pool, SystemLog& log);

    [[nodiscard]] QByteArray read() override;
    void write(const QByteArray& content) override;

private:
    struct Pending;

    QString m_path;
    qint64 m_maxBytes;
    TaskPool& m_pool;
    std::shared_ptr<Pending> m_pending;
};

} // namespace zofra
