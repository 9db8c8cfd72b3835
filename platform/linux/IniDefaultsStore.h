// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"
#include "platform/SystemLog.h"
#include "platform/TaskPool.h"

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace zofra {

/// The user's settings in one text file that a person can read and edit.
///
/// The file is read once, here. A written value can be read at once; it goes to the file in the background,
/// by `inifile::merge`, so that neither two running programs nor a crash nor a full disk lose anything. Where
/// that fails it is told once, on one line, and tried again with the next write.
class IniDefaultsStore final : public DefaultsStore {
public:
    /// Told what is wrong with the file, on one line; on any thread.
    using Report = std::function<void(const QString& line)>;
    /// A number of the settings that means something only between these bounds.
    struct Range {
        QString key;
        float least = 0;
        float most = 0;
    };
    struct Options {
        /// How long a write waits for another program that holds the lock.
        std::chrono::milliseconds lockWait{2000};
        /// A number outside its range is as good as none, whoever wrote it there.
        std::vector<Range> ranges;
    };

    IniDefaultsStore(const QString& path, TaskPool& pool, Report report);
    IniDefaultsStore(const QString& path, TaskPool& pool, Report report, Options options);
    IniDefaultsStore(const IniDefaultsStore&) = delete;
    IniDefaultsStore& operator=(const IniDefaultsStore&) = delete;

    /// zofrazofra/zofrazofra.ini in the user's configuration folder.
    [[nodiscard]] static QString defaultPath();
    /// To the system's log and to standard error. `log` must outlive the store.
    [[nodiscard]] static Report reportTo(SystemLog& log);

    [[nodiscard]] std::optional<QString> string(const QString& key) const override;
    [[nodiscard]] std::optional<float> floatValue(const QString& key) const override;
    [[nodiscard]] std::optional<QByteArray> data(const QString& key) const override;

    void setString(const QString& key, const QString& value) override { set(key, value.toUtf8()); }
    void setFloat(const QString& key, float value) override;
    void setData(const QString& key, const QByteArray& value) override { set(key, value); }

    /// Waits until everything is written, at most for `limit`; for the end of the program. False when
    /// something is not.
    bool flush(std::chrono::milliseconds limit);

private:
    class State;
    void set(const QString& key, const QByteArray& value);

    std::shared_ptr<State> m_state;
    TaskPool& m_pool;
};

} // namespace zofra
