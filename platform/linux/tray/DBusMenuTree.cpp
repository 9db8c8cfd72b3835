// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/DBusMenuTree.h"

#include "platform/ForeignText.h"

#include <algorithm>
#include <utility>

namespace zofra {

namespace {

QVariantMap filtered(QVariantMap properties, const QStringList& names) {
    if (!names.isEmpty())
        properties.removeIf([&names](auto property) { return !names.contains(property.key()); });
    return properties;
}

/// The first item of `nodes`, or below them, that `matches`. Menus are as deep as the program makes them.
template<typename Nodes, typename Matches>
auto findNode(Nodes& nodes, const Matches& matches) -> decltype(nodes.data()) {
    for (auto& candidate : nodes) {
        if (matches(candidate))
            return &candidate;
        if (auto* below = findNode(candidate.children, matches))
            return below;
    }
    return nullptr;
}

/// Whether an item is still the one that was shown: what can be chosen must also still say the same.
bool isSame(const MenuItem& a, const MenuItem& b) {
    const auto canBeChosen = [](const MenuItem& item) { return static_cast<bool>(item.action); };
    return a.kind == b.kind && a.actionName == b.actionName && a.identity == b.identity &&
           canBeChosen(a) == canBeChosen(b) &&
           (canBeChosen(a) ? a.title == b.title : a.iconName == b.iconName);
}

/// What an item has to be told of that is shown with `before`.
void compareProperties(int id, const QVariantMap& before, const QVariantMap& now,
                       DBusMenuTree::Changes& changes) {
    BusMenuProperties updated{id, {}};
    BusMenuRemovedProperties removed{id, {}};
    for (auto property = now.cbegin(); property != now.cend(); ++property) {
        if (before.value(property.key()) != property.value())
            updated.properties.insert(property.key(), property.value());
    }
    for (auto property = before.cbegin(); property != before.cend(); ++property) {
        if (!now.contains(property.key()))
            removed.names.append(property.key());
    }
    if (!updated.properties.isEmpty())
        changes.updated.append(updated);
    if (!removed.names.isEmpty())
        changes.removed.append(removed);
}

template<typename Node>
BusMenuLayout layoutOf(const Node& node, int depth, const QStringList& names) {
    BusMenuLayout layout{node.id, filtered(node.properties, names), {}};
    if (depth == 0)
        return layout;
    for (const Node& child : node.children)
        layout.children.append(layoutOf(child, depth < 0 ? depth : depth - 1, names));
    return layout;
}

template<typename Node>
void appendIds(const Node& node, QList<int>& ids) {
    ids.append(node.id);
    for (const Node& child : node.children)
        appendIds(child, ids);
}

} // namespace

DBusMenuTree::DBusMenuTree(IconName iconName)
    : m_iconName(std::move(iconName)) {
    m_root.properties.insert(u"children-display"_qs, u"submenu"_qs);
}

DBusMenuTree::Changes DBusMenuTree::replace(const Menu& menu) {
    Node root;
    root.properties = m_root.properties;
    for (const MenuItem& item : menu)
        root.children.push_back(makeNode(item));
    Changes changes;
    succeed(root, m_root, changes);
    m_root = std::move(root);
    return changes;
}

void DBusMenuTree::succeed(Node& node, const Node& before, Changes& changes) {
    node.id = before.id;
    compareProperties(node.id, before.properties, node.properties, changes);
    std::vector<const Node*> unclaimed;
    for (const Node& child : before.children)
        unclaimed.push_back(&child);
    bool isSameLayout = before.children.size() == node.children.size();
    for (Node& child : node.children) {
        const auto same = std::find_if(unclaimed.begin(), unclaimed.end(), [&child](const Node* candidate) {
            return isSame(candidate->item, child.item);
        });
        isSameLayout = isSameLayout && same == unclaimed.begin() && same != unclaimed.end();
        if (same == unclaimed.end()) {
            number(child);
        } else {
            succeed(child, **same, changes);
            unclaimed.erase(same);
        }
    }
    if (!isSameLayout)
        changes.layouts.append(node.id);
}

const MenuItem* DBusMenuTree::item(int id) const {
    const Node* found = id == 0 ? nullptr : node(id);
    return found ? &found->item : nullptr;
}

std::optional<BusMenuLayout> DBusMenuTree::layout(int id, int depth, const QStringList& names) const {
    const Node* found = node(id);
    return found ? std::optional(layoutOf(*found, depth, names)) : std::nullopt;
}

std::optional<QVariantMap> DBusMenuTree::properties(int id, const QStringList& names) const {
    const Node* found = node(id);
    return found ? std::optional(filtered(found->properties, names)) : std::nullopt;
}

QList<int> DBusMenuTree::ids() const {
    QList<int> ids;
    appendIds(m_root, ids);
    return ids;
}

DBusMenuTree::Node DBusMenuTree::makeNode(const MenuItem& item) const {
    Node node;
    node.properties = itemProperties(item);
    for (const MenuItem& child : item.submenu)
        node.children.push_back(makeNode(child));
    node.item = item;
    node.item.submenu.clear();
    return node;
}

QVariantMap DBusMenuTree::itemProperties(const MenuItem& item) const {
    // What equals the protocol's default is left out.
    QVariantMap properties;
    if (item.isSeparator()) {
        properties.insert(u"type"_qs, u"separator"_qs);
        return properties;
    }
    properties.insert(u"label"_qs, busMenuLabel(item.title));
    if (!item.isEnabled)
        properties.insert(u"enabled"_qs, false);
    if (item.state != MenuItem::CheckState::none) {
        // Every mark of this program's menus stands for one choice of several.
        properties.insert(u"toggle-type"_qs, u"radio"_qs);
        properties.insert(u"toggle-state"_qs, item.state == MenuItem::CheckState::on ? 1 : 0);
    }
    if (!item.submenu.empty())
        properties.insert(u"children-display"_qs, u"submenu"_qs);
    const QString iconName = item.iconName.isEmpty() || !m_iconName ? QString() : m_iconName(item.iconName);
    if (!iconName.isEmpty())
        properties.insert(u"icon-name"_qs, iconName);
    if (!item.keyEquivalent.isEmpty()) {
        const QStringList keys{u"Control"_qs, item.keyEquivalent.toUpper()};
        properties.insert(u"shortcut"_qs, QVariant::fromValue(QList<QStringList>{keys}));
    }
    // The protocol knows neither; its "accessible-desc" would replace the label for screen readers.
    if (!item.iconDescription.isEmpty())
        properties.insert(u"x-zofra-icon-desc"_qs, shownLine(item.iconDescription));
    if (!item.toolTip.isEmpty())
        properties.insert(u"x-zofra-tooltip"_qs, shownLine(item.toolTip));
    return properties;
}

void DBusMenuTree::number(Node& node) {
    node.id = ++m_lastId;
    for (Node& child : node.children)
        number(child);
}

const DBusMenuTree::Node* DBusMenuTree::node(int id) const {
    if (id == 0)
        return &m_root;
    return findNode(m_root.children, [id](const Node& candidate) { return candidate.id == id; });
}

} // namespace zofra
