// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/PreferredLanguages.h"

#include <QString>

namespace zofra {
namespace {

QString messagesLocale() {
    for (const auto* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        auto value = qEnvironmentVariable(variable);
        if (!value.isEmpty())
            return value;
    }
    return {};
}

bool isNeutral(const QString& locale) {
    return locale.isEmpty() || locale == u"C" || locale.startsWith(u"C.") || locale == u"POSIX";
}

} // namespace

QStringList preferredLanguages() {
    const auto locale = messagesLocale();
    if (isNeutral(locale))
        return {};
    auto languages = qEnvironmentVariable("LANGUAGE").split(u':', Qt::SkipEmptyParts);
    languages += locale;
    return languages;
}

} // namespace zofra
