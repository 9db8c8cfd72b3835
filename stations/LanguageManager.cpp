// SPDX-License-Identifier: GPL-3.0-or-later
#include "stations/LanguageManager.h"

namespace zofra {
namespace {

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

/// The one of four texts that is in `language`.
QString choose(AppLanguage language, const QString& en, const QString& nl, const QString& fr,
               const QString& de) {
    switch (language) {
    case AppLanguage::en:
        return en;
    case AppLanguage::nl:
        return nl;
    case AppLanguage::fr:
        return fr;
    case AppLanguage::de:
        return de;
    }
    Q_UNREACHABLE();
    return {};
}

} // namespace

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

// The variable parts are joined on, never formatted in: a song may contain anything, "%1" included.

QString LanguageManager::stationMenuTitle(const QString& stationName) const {
    return choose(m_currentLanguage, QStringLiteral("Station ("), QStringLiteral("Zender ("),
                  QStringLiteral("Station ("), QStringLiteral("Sender (")) +
           stationName + u')';
}

QString LanguageManager::nowPlayingHeader(const QString& song) const {
    return choose(m_currentLanguage, QStringLiteral("Now Playing: "), QStringLiteral("Nu bezig: "),
                  QStringLiteral("En cours : "), QStringLiteral("Aktuell: ")) +
           song;
}

QString LanguageManager::upNextHeader(const QString& song) const {
    return choose(m_currentLanguage, QStringLiteral("Up Next: "), QStringLiteral("Hierna: "),
                  QStringLiteral("À suivre : "), QStringLiteral("Als Nächstes: ")) +
           song;
}

QString LanguageManager::outputMenuTitle(const QString& targetTitle) const {
    return choose(m_currentLanguage, QStringLiteral("Audio Output ("), QStringLiteral("Audio-uitvoer ("),
                  QStringLiteral("Sortie audio ("), QStringLiteral("Audio-Ausgabe (")) +
           targetTitle + u')';
}

QString LanguageManager::volumeMenuTitle(int percent) const {
    return choose(m_currentLanguage, QStringLiteral("Volume ("), QStringLiteral("Volume ("),
                  QStringLiteral("Volume ("), QStringLiteral("Lautstärke (")) +
           QString::number(percent) + QStringLiteral(" %)");
}

QString LanguageManager::tooltipStation(const QString& name, const QString& genre) const {
    return choose(m_currentLanguage, QStringLiteral("Station: "), QStringLiteral("Zender: "),
                  QStringLiteral("Station : "), QStringLiteral("Sender: ")) +
           name + QStringLiteral(" (") + genre + u')';
}

QString LanguageManager::tooltipOutput(const QString& title) const {
    return choose(m_currentLanguage, QStringLiteral("Output: "), QStringLiteral("Uitvoer: "),
                  QStringLiteral("Sortie : "), QStringLiteral("Ausgabe: ")) +
           title;
}

QString LanguageManager::tooltipStatus(bool isPlaying) const {
    return QStringLiteral("Status: ") +
           (isPlaying ? choose(m_currentLanguage, QStringLiteral("Playing"), QStringLiteral("Afspelen"),
                               QStringLiteral("Lecture en cours"), QStringLiteral("Wiedergabe läuft"))
                      : choose(m_currentLanguage, QStringLiteral("Paused"), QStringLiteral("Gepauzeerd"),
                               QStringLiteral("En pause"), QStringLiteral("Pausiert")));
}

} // namespace zofra
