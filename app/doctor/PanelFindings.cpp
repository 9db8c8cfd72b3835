// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/PanelFindings.h"

namespace zofra::doctor {

namespace {

const QString panelArea = u"panel"_qs;

QString windowsName(TraySession::Windows windows, AppLanguage language) {
    using Windows = TraySession::Windows;
    return windows == Windows::x11       ? u"X11"_qs
           : windows == Windows::wayland ? u"Wayland"_qs
                                         : text::otherWindows.in(language);
}

QString panelName(const DesktopFacts& facts, AppLanguage language) {
    return facts.session.panelProgram.isEmpty() ? text::namelessPanel.in(language)
                                                : facts.session.panelProgram;
}

const Text& reasonFor(const DesktopFacts& facts, StatusItemMode mode) {
    const QString& setting = facts.session.setting;
    if (setting == u"direct" || setting == u"hostmenu")
        return text::asSettingSays;
    if (mode == StatusItemMode::direct)
        return text::passesBothClicks;
    return facts.session.windows == TraySession::Windows::wayland ? text::waylandMenus : text::drawsMenu;
}

Finding shown(const DesktopFacts& facts, AppLanguage language) {
    const auto mode = trayMode(facts.session);
    const QString name = statusItemModeName(mode);
    return fine(
        panelArea,
        text::panelShows.in(language, panelName(facts, language), name, reasonFor(facts, mode).in(language)),
        {{u"panel"_qs, facts.session.panelProgram}, {u"mode"_qs, name}});
}

Finding notShown(const DesktopFacts& facts, AppLanguage language) {
    const bool isGnome = facts.session.desktop.contains(u"GNOME", Qt::CaseInsensitive);
    const auto& cure = isGnome ? text::installExtension : facts.hasWatcher ? text::addTray : text::startPanel;
    const QString found = facts.hasWatcher ? text::watchedButNotShown.in(language, panelName(facts, language))
                                           : text::notShown.in(language);
    return problem(panelArea, found, cure.in(language),
                   {{u"panel"_qs, QJsonValue()}, {u"mode"_qs, u"window"_qs}});
}

} // namespace

Finding judgeSession(const DesktopFacts& facts, AppLanguage language) {
    const QString session = u"session"_qs;
    const QJsonObject details{{u"platform"_qs, facts.platform}, {u"desktop"_qs, facts.session.desktop}};
    if (facts.isHeadless)
        return fine(session, text::noDisplayNeeded.in(language), details);
    if (facts.platform.isEmpty())
        return problem(session,
                       facts.variables.isEmpty() ? text::noDisplaySet.in(language)
                                                 : text::noDisplayAnswers.in(language, facts.variables),
                       text::startInSession.in(language), details);
    const QString desktop =
        facts.session.desktop.isEmpty() ? text::desktopUnknown.in(language) : facts.session.desktop;
    return fine(session, windowsName(facts.session.windows, language) + u", "_qs + desktop, details);
}

Finding judgePanel(const DesktopFacts& facts, AppLanguage language) {
    if (facts.isHeadless)
        return skipped(panelArea, text::headlessShowsNone.in(language));
    if (facts.platform.isEmpty())
        return skipped(panelArea, text::noDisplayForPanel.in(language));
    if (facts.hasWatcher && facts.hasPanel)
        return shown(facts, language);
    if (facts.hasOldTray && facts.session.windows == TraySession::Windows::x11)
        return fine(panelArea, text::oldTray.in(language),
                    {{u"panel"_qs, QJsonValue()}, {u"mode"_qs, u"xembed"_qs}});
    return notShown(facts, language);
}

} // namespace zofra::doctor
