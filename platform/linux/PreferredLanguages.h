// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace zofra {

/// The user's languages in order of preference, as the system names them ("nl_BE.UTF-8"): $LANGUAGE, then the
/// locale of messages ($LC_ALL, $LC_MESSAGES, $LANG). Empty for the "C" locale, for which $LANGUAGE does not
/// count either.
[[nodiscard]] inline QStringList preferredLanguages() {
    QString locale;
    for (const auto* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (locale.isEmpty())
            locale = qEnvironmentVariable(variable);
    }
    if (locale.isEmpty() || locale == u"C" || locale.startsWith(u"C.") || locale == u"POSIX")
        return {};
    return qEnvironmentVariable("LANGUAGE").split(u':', Qt::SkipEmptyParts) + QStringList(locale);
}

} // namespace zofra
