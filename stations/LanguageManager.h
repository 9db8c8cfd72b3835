// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"
#include "platform/Observable.h"
#include "platform/SharedInstance.h"
#include "stations/texts/InterfaceTexts.h"

#include <QString>
#include <QStringList>

#include <functional>

namespace zofra {

/// The stored language, else the first of `preferredLanguages` by its first two letters, else English.
[[nodiscard]] inline AppLanguage languageAtStart(const std::optional<QString>& stored,
                                                 const QStringList& preferredLanguages) {
    const auto preferred = appLanguageFromRawValue(preferredLanguages.value(0).left(2).toLower());
    return appLanguageFromRawValue(stored.value_or(QString())).value_or(preferred.value_or(AppLanguage::en));
}

/// Holds the language of the user interface, and composes menu and tooltip in it. Main thread only.
class LanguageManager final : public Observable {
public:
    /// The language at the start is not written.
    LanguageManager(DefaultsStore& defaults, const QStringList& preferredLanguages)
        : m_defaults(defaults)
        , m_currentLanguage(*this, languageAtStart(defaults.string(defaultsKey), preferredLanguages)) {}

    /// The one of the running program.
    [[nodiscard]] static LanguageManager& shared() { return SharedInstance<LanguageManager>::get(); }

    /// Settings key of the language.
    const QString defaultsKey = u"app_language"_qs;

    [[nodiscard]] AppLanguage currentLanguage() const { return m_currentLanguage; }
    /// Always stores the language and calls `onLanguageChanged`.
    void setCurrentLanguage(AppLanguage language) {
        m_currentLanguage = language;
        m_defaults.setString(defaultsKey, rawValue(language));
        if (onLanguageChanged)
            onLanguageChanged();
    }
    /// Like assigning it, but does nothing when it is the current one.
    void setLanguage(AppLanguage language) {
        if (language != m_currentLanguage.get())
            setCurrentLanguage(language);
    }

    std::function<void()> onLanguageChanged;

    [[nodiscard]] QString stationMenuTitle(const QString& stationName) const {
        return texts::stationMenu.in(m_currentLanguage, stationName);
    }
    [[nodiscard]] QString nowPlayingHeader(const QString& song) const {
        return texts::nowPlayingLine.in(m_currentLanguage, song);
    }
    [[nodiscard]] QString upNextHeader(const QString& song) const {
        return texts::upNextLine.in(m_currentLanguage, song);
    }
    [[nodiscard]] QString outputMenuTitle(const QString& targetTitle) const {
        return texts::outputMenu.in(m_currentLanguage, targetTitle);
    }
    [[nodiscard]] QString volumeMenuTitle(int percent) const {
        return texts::volumeMenu.in(m_currentLanguage, percent);
    }
    [[nodiscard]] QString tooltipStation(const QString& name, const QString& genre) const {
        return texts::tooltipStation.in(m_currentLanguage, name, genre);
    }
    [[nodiscard]] QString tooltipOutput(const QString& title) const {
        return texts::tooltipOutput.in(m_currentLanguage, title);
    }
    [[nodiscard]] QString tooltipStatus(bool isPlaying) const {
        const Text& word = isPlaying ? texts::playing : texts::paused;
        return texts::tooltipStatus.in(m_currentLanguage, word.in(m_currentLanguage));
    }

private:
    DefaultsStore& m_defaults;
    Published<AppLanguage> m_currentLanguage;
};

} // namespace zofra
