// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/MenuDump.h"

#include "platform/ForeignText.h"
#include "speakers/SonosRoom.h"
#include "stations/RadioStation.h"

#include <QAction>

namespace zofra::test {
namespace {

/// One item, whatever shows it.
struct Line {
    bool isSeparator = false;
    QString title;
    bool isEnabled = true;
    MenuItem::CheckState state = MenuItem::CheckState::none;
    QString iconDescription;
    QString toolTip;
    QString key;
};

QString text(const Line& line) {
    if (line.isSeparator)
        return u"---"_qs;
    QString text;
    if (line.state != MenuItem::CheckState::none)
        text += line.state == MenuItem::CheckState::on ? u"[x] "_qs : u"[ ] "_qs;
    text += line.title;
    if (!line.isEnabled)
        text += u" {disabled}"_qs;
    if (!line.key.isEmpty())
        text += u" {key %1}"_qs.arg(line.key);
    if (!line.iconDescription.isEmpty())
        text += u" {icon text %1}"_qs.arg(line.iconDescription);
    if (!line.toolTip.isEmpty())
        text += u" {tool tip %1}"_qs.arg(line.toolTip);
    return text;
}

QString represented(const MenuItem& item) {
    if (const auto* station = std::any_cast<RadioStation>(&item.representedObject))
        return u" {station %1}"_qs.arg(station->rawValue());
    if (const auto* room = std::any_cast<SonosRoom>(&item.representedObject))
        return u" {room %1}"_qs.arg(room->id());
    if (const auto* value = std::any_cast<float>(&item.representedObject))
        return u" {float %1}"_qs.arg(double(*value));
    return item.representedObject.has_value() ? u" {something else}"_qs : QString();
}

void append(QString& out, const Menu& menu, Detail detail, int depth) {
    for (const MenuItem& item : menu) {
        const Line line{item.isSeparator(),   item.title,   item.isEnabled,    item.state,
                        item.iconDescription, item.toolTip, item.keyEquivalent};
        out += QString(depth * 2, u' ') + text(line);
        if (detail == Detail::model) {
            if (!item.iconName.isEmpty())
                out += u" {icon %1}"_qs.arg(item.iconName);
            out += represented(item);
            if (!item.actionName.isEmpty())
                out += u" -> %1"_qs.arg(item.actionName);
        }
        out += u'\n';
        append(out, item.submenu, detail, depth + 1);
    }
}

void append(QString& out, const BusMenuLayout& parent, int depth) {
    for (const BusMenuLayout& child : parent.children) {
        const QVariantMap& p = child.properties;
        Line line;
        line.isSeparator = p.value(u"type"_qs).toString() == u"separator"_qs;
        line.title = p.value(u"label"_qs).toString().replace(u"__"_qs, u"_"_qs);
        line.isEnabled = p.value(u"enabled"_qs, true).toBool();
        if (p.value(u"toggle-type"_qs) == u"radio"_qs)
            line.state = p.value(u"toggle-state"_qs).toInt() == 1 ? MenuItem::CheckState::on
                                                                  : MenuItem::CheckState::off;
        line.iconDescription = p.value(u"x-zofra-icon-desc"_qs).toString();
        line.toolTip = p.value(u"x-zofra-tooltip"_qs).toString();
        const auto keys = p.value(u"shortcut"_qs).value<QList<QStringList>>();
        if (!keys.isEmpty() && keys.first().value(0) == u"Control"_qs)
            line.key = keys.first().value(1).toLower();
        out += QString(depth * 2, u' ') + text(line) + u'\n';
        append(out, child, depth + 1);
    }
}

void append(QString& out, const QMenu& menu, int depth) {
    for (const QAction* action : menu.actions()) {
        Line line;
        line.isSeparator = action->isSeparator();
        line.title = action->text().replace(u"&&"_qs, u"&"_qs);
        line.isEnabled = action->isEnabled();
        if (action->isCheckable())
            line.state = action->isChecked() ? MenuItem::CheckState::on : MenuItem::CheckState::off;
        // Without one of its own it is the item's text.
        if (action->iconText() != QAction(action->text()).iconText())
            line.iconDescription = action->iconText();
        line.toolTip = action->property("zofraToolTip").toString();
        const QString keys = action->shortcut().toString(QKeySequence::PortableText);
        if (keys.startsWith(u"Ctrl+"_qs))
            line.key = keys.mid(5).toLower();
        out += QString(depth * 2, u' ') + text(line) + u'\n';
        if (const QMenu* submenu = action->menu<QMenu*>())
            append(out, *submenu, depth + 1);
    }
}

} // namespace

QString dump(const Menu& menu, Detail detail) {
    QString out;
    append(out, menu, detail, 0);
    return out;
}

QString dump(const BusMenuLayout& root) {
    QString out;
    append(out, root, 0);
    return out;
}

QString dump(const QMenu& menu) {
    QString out;
    append(out, menu, 0);
    return out;
}

} // namespace zofra::test
