// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/PanelFindings.h"

#include "stations/texts/DoctorTexts.h"

namespace zofra::doctor {

namespace {

QString area() {
    return QStringLiteral("panel");
}

QString windowsName(TraySession::Windows windows, AppLanguage language) {
    switch (windows) {
    case TraySession::Windows::x11:
        return QStringLiteral("X11");
    case TraySession::Windows::wayland:
        return QStringLiteral("Wayland");
    case TraySession::Windows::other:
        break;
    }
    return texts::doctor::otherWindows.in(language);
}

QString panelName(const DesktopFacts& facts, AppLanguage language) {
    return facts.session.panelProgram.isEmpty() ? texts::doctor::namelessPanel.in(language)
                                                : facts.session.panelProgram;
}

bool isChosenByUser(const QString& setting) {
    return setting == QLatin1String("direct") || setting == QLatin1String("hostmenu");
}

const Text& reasonFor(const DesktopFacts& facts, StatusItemMode mode) {
    if (isChosenByUser(facts.session.setting))
        return texts::doctor::asSettingSays;
    if (mode == StatusItemMode::direct)
        return texts::doctor::passesBothClicks;
    return facts.session.windows == TraySession::Windows::wayland ? texts::doctor::waylandMenus
                                                                  : texts::doctor::drawsMenu;
}

Finding shown(const DesktopFacts& facts, AppLanguage language) {
    const auto mode = trayMode(facts.session);
    const QString name = statusItemModeName(mode);
    return fine(area(),
                texts::doctor::panelShows.in(language, panelName(facts, language), name,
                                             reasonFor(facts, mode).in(language)),
                {{QStringLiteral("panel"), facts.session.panelProgram}, {QStringLiteral("mode"), name}});
}

Finding notShown(const DesktopFacts& facts, AppLanguage language) {
    const bool isGnome = facts.session.desktop.contains(QLatin1String("GNOME"), Qt::CaseInsensitive);
    const auto& cure = isGnome            ? texts::doctor::installExtension
                       : facts.hasWatcher ? texts::doctor::addTray
                                          : texts::doctor::startPanel;
    const QString found = facts.hasWatcher
                              ? texts::doctor::watchedButNotShown.in(language, panelName(facts, language))
                              : texts::doctor::notShown.in(language);
    return problem(
        area(), found, cure.in(language),
        {{QStringLiteral("panel"), QJsonValue()}, {QStringLiteral("mode"), QStringLiteral("window")}});
}

} // namespace

Finding judgeSession(const DesktopFacts& facts, AppLanguage language) {
    const QString area = QStringLiteral("session");
    const QJsonObject details{{QStringLiteral("platform"), facts.platform},
                              {QStringLiteral("desktop"), facts.session.desktop}};
    if (facts.isHeadless)
        return fine(area, texts::doctor::noDisplayNeeded.in(language), details);
    if (facts.platform.isEmpty())
        return problem(area,
                       facts.variables.isEmpty()
                           ? texts::doctor::noDisplaySet.in(language)
                           : texts::doctor::noDisplayAnswers.in(language, facts.variables),
                       texts::doctor::startInSession.in(language), details);
    const QString desktop =
        facts.session.desktop.isEmpty() ? texts::doctor::desktopUnknown.in(language) : facts.session.desktop;
    return fine(area, windowsName(facts.session.windows, language) + QStringLiteral(", ") + desktop, details);
}

Finding judgePanel(const DesktopFacts& facts, AppLanguage language) {
    if (facts.isHeadless)
        return skipped(area(), texts::doctor::headlessShowsNone.in(language));
    if (facts.platform.isEmpty())
        return skipped(area(), texts::doctor::noDisplayForPanel.in(language));
    if (facts.hasWatcher && facts.hasPanel)
        return shown(facts, language);
    if (facts.hasOldTray && facts.session.windows == TraySession::Windows::x11)
        return fine(
            area(), texts::doctor::oldTray.in(language),
            {{QStringLiteral("panel"), QJsonValue()}, {QStringLiteral("mode"), QStringLiteral("xembed")}});
    return notShown(facts, language);
}

} // namespace zofra::doctor
