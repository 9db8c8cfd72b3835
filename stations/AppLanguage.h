// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

#include <array>
#include <cstdint>
#include <optional>

namespace zofra {

/// The languages of the user interface, in the order in which lists show them.
enum class AppLanguage : std::uint8_t { en, nl, fr, de };

inline constexpr std::array allAppLanguages{AppLanguage::en, AppLanguage::nl, AppLanguage::fr,
                                            AppLanguage::de};

/// "en", "nl", "fr" or "de".
[[nodiscard]] inline QString rawValue(AppLanguage language) {
    static const std::array codes{u"en"_qs, u"nl"_qs, u"fr"_qs, u"de"_qs};
    return codes.at(static_cast<std::size_t>(language));
}
/// Exactly the four lower-case codes; anything else is no language.
[[nodiscard]] inline std::optional<AppLanguage> appLanguageFromRawValue(QStringView text) {
    for (const auto language : allAppLanguages) {
        if (rawValue(language) == text)
            return language;
    }
    return std::nullopt;
}

} // namespace zofra
