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
[[nodiscard]] QString rawValue(AppLanguage language);
/// Exactly the four lower-case codes; anything else is no language.
[[nodiscard]] std::optional<AppLanguage> appLanguageFromRawValue(QStringView rawValue);

} // namespace zofra
