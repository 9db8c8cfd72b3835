// SPDX-License-Identifier: GPL-3.0-or-later
#include "stations/AppLanguage.h"

namespace zofra {

QString rawValue(AppLanguage language) {
    static const std::array codes{QStringLiteral("en"), QStringLiteral("nl"), QStringLiteral("fr"),
                                  QStringLiteral("de")};
    return codes.at(static_cast<std::size_t>(language));
}

std::optional<AppLanguage> appLanguageFromRawValue(QStringView text) {
    for (const auto language : allAppLanguages) {
        if (rawValue(language) == text)
            return language;
    }
    return std::nullopt;
}

} // namespace zofra
