// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "stations/AppLanguage.h"

#include <QString>
#include <QStringView>

#include <array>

namespace zofra {

/// One text of the user interface in its four languages. `%1` to `%9` stand for what varies. A text that
/// lacks a language, or whose languages leave different places open, does not compile.
class Text {
public:
    /// The same in every language.
    explicit consteval Text(QStringView everyLanguage)
        : Text(everyLanguage, everyLanguage, everyLanguage, everyLanguage) {}
    consteval Text(QStringView en, QStringView nl, QStringView fr, QStringView de)
        : m_columns{en, nl, fr, de} {
        for (const auto column : m_columns) {
            if (column.isEmpty() || places(column) != places(en))
                throw "a language is missing, or it leaves other places open";
        }
    }

    [[nodiscard]] QString in(AppLanguage language) const {
        return m_columns.at(static_cast<std::size_t>(language)).toString();
    }
    /// With these values in the places left open. A value may itself contain "%1".
    template<typename... Values>
    [[nodiscard]] QString in(AppLanguage language, const Values&... values) const {
        return in(language).arg(values...);
    }

private:
    /// One bit for each place.
    static consteval unsigned places(QStringView text) {
        unsigned found = 0;
        for (qsizetype i = 0; i + 1 < text.size(); ++i) {
            if (text[i] == u'%' && text[i + 1] >= u'1' && text[i + 1] <= u'9')
                found |= 1U << (text[i + 1].unicode() - u'0');
        }
        return found;
    }

    std::array<QStringView, allAppLanguages.size()> m_columns;
};

} // namespace zofra
