// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QString>
#include <QUrl>

namespace zofra {

/// Bounds the processor time that one run spends on reading what players send. No host takes it from another:
/// each has an amount of its own, and short answers are read even when long ones have used up the whole.
class ReadBudget {
public:
    /// In characters. A household of 64 players sends a twelfth of the first for all of them together.
    static constexpr qsizetype perHost = 8'388'608;
    static constexpr qsizetype ofLongAnswers = 67'108'864;
    static constexpr qsizetype longAnswer = 65'536;

    /// Whether a text from `source` may be read; if so it is taken off.
    [[nodiscard]] bool take(const QUrl& source, const QString& text) {
        auto& ofHost = m_perHost[source.host()];
        const auto ofAll = text.size() > longAnswer ? text.size() : 0;
        if (ofHost + text.size() > perHost || m_ofAll + ofAll > ofLongAnswers)
            return false;
        ofHost += text.size();
        m_ofAll += ofAll;
        return true;
    }

private:
    QHash<QString, qsizetype> m_perHost;
    qsizetype m_ofAll = 0;
};

} // namespace zofra
