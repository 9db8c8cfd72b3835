// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"
#include "platform/Observable.h"
#include "platform/SharedInstance.h"
#include "stations/AppLanguage.h"

#include <QString>
#include <QStringList>

#include <functional>

namespace zofra {

/// The stored language, else the first of `preferredLanguages` by its first two letters, else English.
[[nodiscard]] AppLanguage languageAtStart(const std::optional<QString>& stored,
                                          const QStringList& preferredLanguages);

/// Holds the language of the user interface, and composes menu and tooltip in it. Main thread only.
class LanguageManager final : public Observable {
public:
    /// The language at the start is not written.
    LanguageManager(DefaultsStore& defaults, const QStringList& preferredLanguages);

    /// The one of the running program.
    [[nodiscard]] static LanguageManager& shared() { return SharedInstance<LanguageManager>::get(); }

    /// Settings key of the language.
    const QString defaultsKey = u"app_language"_qs;

    [[nodiscard]] AppLanguage currentLanguage() const { return m_currentLanguage; }
    /// Always stores the language and calls `onLanguageChanged`.
    void setCurrentLanguage(AppLanguage language);
    /// Like assigning it, but does nothing when it is the current one.
    void setLanguage(AppLanguage language);

    std::function<void()> onLanguageChanged;

    [[nodiscard]] QString stationMenuTitle(const QString& stationName) const;
    [[nodiscard]] QString nowPlayingHeader(const QString& song) const;
    [[nodiscard]] QString upNextHeader(const QString& song) const;
    [[nodiscard]] QString outputMenuTitle(const QString& targetTitle) const;
    [[nodiscard]] QString volumeMenuTitle(int percent) const;
    [[nodiscard]] QString tooltipStation(const QString& name, const QString& genre) const;
    [[nodiscard]] QString tooltipOutput(const QString& title) const;
    [[nodiscard]] QString tooltipStatus(bool isPlaying) const;

private:
    DefaultsStore& m_defaults;
    Published<AppLanguage> m_currentLanguage;
};

} // namespace zofra
