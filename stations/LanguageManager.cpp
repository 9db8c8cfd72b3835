// SPDX-License-Identifier: GPL-3.0-or-later
#include "stations/LanguageManager.h"

#include "stations/texts/InterfaceTexts.h"

namespace zofra {

AppLanguage languageAtStart(const std::optional<QString>& stored, const QStringList& preferredLanguages) {
    if (stored) {
        if (const auto language = appLanguageFromRawValue(*stored))
            return *language;
    }
    if (!preferredLanguages.isEmpty()) {
        if (const auto language = appLanguageFromRawValue(preferredLanguages.first().left(2).toLower()))
            return *language;
    }
    return AppLanguage::en;
}

LanguageManager::LanguageManager(DefaultsStore& defaults, const QStringList& preferredLanguages)
    : m_defaults(defaults)
    , m_currentLanguage(*this, languageAtStart(defaults.string(defaultsKey), preferredLanguages)) {}

void LanguageManager::setCurrentLanguage(AppLanguage language) {
    m_currentLanguage = language;
    m_defaults.setString(defaultsKey, rawValue(language));
    if (onLanguageChanged)
        onLanguageChanged();
}

void LanguageManager::setLanguage(AppLanguage language) {
    if (language != m_currentLanguage.get())
        setCurrentLanguage(language);
}

QString LanguageManager::stationMenuTitle(const QString& stationName) const {
    return texts::stationMenu.in(m_currentLanguage, stationName);
}

QString LanguageManager::nowPlayingHeader(const QString& song) const {
    return texts::nowPlayingLine.in(m_currentLanguage, song);
}

QString LanguageManager::upNextHeader(const QString& song) const {
    return texts::upNextLine.in(m_currentLanguage, song);
}

QString LanguageManager::outputMenuTitle(const QString& targetTitle) const {
    return texts::outputMenu.in(m_currentLanguage, targetTitle);
}

QString LanguageManager::volumeMenuTitle(int percent) const {
    return texts::volumeMenu.in(m_currentLanguage, percent);
}

QString LanguageManager::tooltipStation(const QString& name, const QString& genre) const {
    return texts::tooltipStation.in(m_currentLanguage, name, genre);
}

QString LanguageManager::tooltipOutput(const QString& title) const {
    return texts::tooltipOutput.in(m_currentLanguage, title);
}

QString LanguageManager::tooltipStatus(bool isPlaying) const {
    const auto& word = isPlaying ? texts::playing : texts::paused;
    return texts::tooltipStatus.in(m_currentLanguage, word.in(m_currentLanguage));
}

} // namespace zofra
