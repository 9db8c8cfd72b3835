// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/IniDefaultsStore.h"

#include "platform/ForeignText.h"
#include "platform/linux/IniFile.h"
#include "platform/linux/StandardOutputWriter.h"
#include "platform/linux/XdgFolders.h"

#include <QMap>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace zofra {
namespace {

using Values = QMap<QByteArray, QByteArray>;

std::optional<float> finiteNumber(const QByteArray& text) {
    const bool hasPlus = text.startsWith('+') && !text.startsWith("+-");
    const char* begin = text.constData() + (hasPlus ? 1 : 0);
    const char* end = text.constData() + text.size();
    float value = 0;
    const auto [rest, error] = std::from_chars(begin, end, value);
    if (error != std::errc() || rest != end || !std::isfinite(value))
        return std::nullopt;
    return value;
}

} // namespace

/// Shared with the background task that writes, so that either may end first.
class IniDefaultsStore::State {
public:
    State(QString path, Report report, Options options)
        : m_path(std::move(path))
        , m_report(std::move(report))
        , m_options(std::move(options)) {
        auto read = inifile::read(m_path);
        if (read)
            m_document = std::move(*read);
        else
            tell(u"cannot be read from"_qs, read.error(), u"nothing stored there is used or changed"_qs);
    }

    std::optional<QByteArray> value(const QByteArray& key) {
        const std::scoped_lock lock(m_mutex);
        const auto written = m_written.constFind(key);
        return written != m_written.constEnd() ? std::optional(*written) : m_document.value(key);
    }

    [[nodiscard]] bool isInRange(const QString& key, float number) const {
        return std::ranges::all_of(m_options.ranges, [&](const Range& range) {
            return range.key != key || (number >= range.least && number <= range.most);
        });
    }

    enum class Next { nothing, write };
    Next set(const QByteArray& key, const QByteArray& value) {
        const std::scoped_lock lock(m_mutex);
        m_written.insert(key, value);
        // What could not be read again is not written.
        if (key.size() + encodedIniValue(value).size() >= IniDocument::maxLineBytes) {
            tell(u"cannot be written to"_qs, QString::fromUtf8(key) + u" is too long"_qs,
                 u"it lasts until the program ends"_qs);
            return Next::nothing;
        }
        m_unsaved.insert(key, value);
        return std::exchange(m_isWriting, true) ? Next::nothing : Next::write;
    }

    Next retry() {
        const std::scoped_lock lock(m_mutex);
        return m_unsaved.isEmpty() || std::exchange(m_isWriting, true) ? Next::nothing : Next::write;
    }

    /// Writes until nothing is left or it fails. One at a time.
    void write() {
        std::unique_lock lock(m_mutex);
        while (!m_unsaved.isEmpty()) {
            auto batch = std::exchange(m_unsaved, {});
            lock.unlock();
            auto merged = inifile::merge(m_path, batch, m_options.lockWait);
            lock.lock();
            if (merged) {
                m_document = std::move(merged->document);
                m_toldReason.clear();
                if (!merged->keptAs.isEmpty())
                    tellKept(merged->keptAs);
                continue;
            }
            // Kept for the next time, but for what has been set anew since.
            batch.insert(std::exchange(m_unsaved, {}));
            m_unsaved = std::move(batch);
            tell(u"cannot be written to"_qs, merged.error(), u"changes last until the program ends"_qs);
            break;
        }
        m_isWriting = false;
        m_idle.notify_all();
    }

    bool waitUntilIdle(std::chrono::milliseconds limit) {
        std::unique_lock lock(m_mutex);
        return m_idle.wait_for(lock, limit, [this] { return !m_isWriting; }) && m_unsaved.isEmpty();
    }

private:
    void tell(const QString& what, const QString& reason, const QString& consequence) {
        if (reason == std::exchange(m_toldReason, reason))
            return;
        m_report(visibleText(u"Settings %1 %2: %3; %4"_qs.arg(what, m_path, reason, consequence)));
    }

    void tellKept(const QString& copy) {
        m_report(
            visibleText(u"Settings in %1 were damaged: what was there is kept in %2"_qs.arg(m_path, copy)));
    }

    const QString m_path;
    const Report m_report;
    const Options m_options;
    std::mutex m_mutex;
    std::condition_variable m_idle;
    IniDocument m_document;
    /// Everything set in this run: it counts here whatever becomes of the file.
    Values m_written;
    Values m_unsaved;
    bool m_isWriting = false;
    QString m_toldReason;
};

IniDefaultsStore::IniDefaultsStore(const QString& path, TaskPool& pool, Report report)
    : IniDefaultsStore(path, pool, std::move(report), Options()) {}

IniDefaultsStore::IniDefaultsStore(const QString& path, TaskPool& pool, Report report, Options options)
    : m_state(std::make_shared<State>(path, std::move(report), std::move(options)))
    , m_pool(pool) {}

QString IniDefaultsStore::defaultPath() {
    return xdg::configHome() + u"/zofrazofra/zofrazofra.ini"_qs;
}

IniDefaultsStore::Report IniDefaultsStore::reportTo(SystemLog& log) {
    return [&log](const QString& line) {
        log.log(line);
        writeErrorLine(line);
    };
}

std::optional<QString> IniDefaultsStore::string(const QString& key) const {
    const auto value = m_state->value(key.toUtf8());
    return value ? std::optional(QString::fromUtf8(*value)) : std::nullopt;
}

std::optional<float> IniDefaultsStore::floatValue(const QString& key) const {
    const auto value = m_state->value(key.toUtf8());
    const auto number = value ? finiteNumber(*value) : std::nullopt;
    return number && m_state->isInRange(key, *number) ? number : std::nullopt;
}

std::optional<QByteArray> IniDefaultsStore::data(const QString& key) const {
    return m_state->value(key.toUtf8());
}

void IniDefaultsStore::setFloat(const QString& key, float value) {
    // The shortest text that reads back as the same number, whatever the locale.
    std::array<char, 32> text{};
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value);
    Q_ASSERT(error == std::errc());
    set(key, QByteArray(text.data(), end - text.data()));
}

void IniDefaultsStore::set(const QString& key, const QByteArray& value) {
    if (m_state->set(key.toUtf8(), value) == State::Next::write)
        m_pool.async([state = m_state] { state->write(); });
}

bool IniDefaultsStore::flush(std::chrono::milliseconds limit) {
    // What could not be written before has its last chance now.
    if (m_state->retry() == State::Next::write)
        m_pool.async([state = m_state] { state->write(); });
    return m_state->waitUntilIdle(limit);
}

} // namespace zofra
