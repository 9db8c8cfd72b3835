// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelMenus.h"

#include "stations/texts/InterfaceTexts.h"

namespace zofra {

namespace {

PanelMenuEntry::Mark markOf(bool isCurrent) {
    return isCurrent ? PanelMenuEntry::Mark::on : PanelMenuEntry::Mark::off;
}

PanelMenuEntry output(OutputCommand command, const QString& text) {
    PanelMenuEntry entry;
    entry.command = static_cast<int>(command);
    entry.text = text;
    return entry;
}

PanelMenuEntry target(OutputCommand command, const QString& text, bool isCurrent) {
    PanelMenuEntry entry = output(command, text);
    entry.mark = markOf(isCurrent);
    return entry;
}

} // namespace

QList<PanelMenuEntry> stationMenuEntries(RadioStation current) {
    QList<PanelMenuEntry> entries;
    for (const RadioStation station : RadioStation::allCases) {
        PanelMenuEntry entry;
        entry.argument = station.rawValue();
        entry.text = station.displayName() + QStringLiteral(" – ") + station.genre();
        entry.mark = markOf(station == current);
        entries += entry;
    }
    return entries;
}

QList<PanelMenuEntry> outputMenuEntries(const SonosManager& sonos, AppLanguage language) {
    const AudioOutputTarget& active = sonos.activeTarget.get();
    QList<PanelMenuEntry> entries;
    entries +=
        target(OutputCommand::thisMac, texts::thisMac.in(language), active == AudioOutputTarget::localMac());
    for (const SonosRoom& room : sonos.rooms.get()) {
        PanelMenuEntry entry = target(OutputCommand::room, sonos.displayTitle(room),
                                      active == AudioOutputTarget::sonos(room.id()));
        entry.argument = room.id();
        entries += entry;
    }
    if (sonos.rooms.get().isEmpty()) {
        PanelMenuEntry reason;
        reason.kind = PanelMenuEntry::Kind::message;
        reason.command = -1;
        reason.text = sonos.emptyStateMessage();
        entries += reason;
    }
    entries += target(OutputCommand::everywhere, texts::everywhere.in(language),
                      active == AudioOutputTarget::sonosEverywhere());
    entries.back().help = texts::synchronizationNote.in(language);
    PanelMenuEntry divider;
    divider.kind = PanelMenuEntry::Kind::separator;
    divider.command = -1;
    entries += divider;
    entries += output(OutputCommand::search, texts::searchEntry.in(language));
    entries += output(OutputCommand::allowLocalNetwork, texts::allowLocalNetwork.in(language));
    return entries;
}

} // namespace zofra
