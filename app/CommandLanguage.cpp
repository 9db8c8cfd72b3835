// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CommandLanguage.h"

#include "platform/linux/IniDefaultsStore.h"
#include "platform/linux/IniFile.h"
#include "platform/linux/PreferredLanguages.h"
#include "stations/LanguageManager.h"

namespace zofra {

AppLanguage commandLanguage() {
    const auto settings = inifile::read(IniDefaultsStore::defaultPath());
    const auto stored = settings ? settings->value("app_language") : std::nullopt;
    return languageAtStart(stored ? std::optional(QString::fromUtf8(*stored)) : std::nullopt,
                           preferredLanguages());
}

} // namespace zofra
