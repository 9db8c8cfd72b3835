// SPDX-License-Identifier: GPL-3.0-or-later
#include "stations/AppLanguage.h"

namespace zofra {

QString rawValue(AppLanguage language) {
    switch (language) {
    case AppLanguage::en:
        return QStringLiteral("en");
    case AppLanguage::nl:
        return QStringLiteral("nl");
    case AppLanguage::fr:
        return QStringLiteral("fr");
    case AppLanguage::de:
        return QStringLiteral("de");
    }
    Q_UNREACHABLE();
    return {};
}

std::optional<AppLanguage> appLanguageFromRawValue(QStringView text) {
    for (const auto language : allAppLanguages) {
        if (rawValue(language) == text)
            return language;
    }
    return std::nullopt;
}

} // namespace zofra
