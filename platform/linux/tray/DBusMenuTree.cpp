// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/DBusMenuTree.h"

#include "platform/ForeignText.h"

#include <algorithm>
#include <utility>

namespace zofra {

namespace {

QVariantMap filtered(const QVariantMap& properties, const QStringList& names) {
    if (names.isEmpty())
        return properties;
    QVariantMap chosen;
    for (auto property = properties.cbegin(); property != properties.cend(); ++property) {
        if (names.contains(property.key()))
            chosen.insert(property.key(), property.value());
    }
    return chosen;
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

/// Whether both look the same and stand for the same things.
template<typename Node>
bool looksAlike(const Node& a, const Node& b) {
    return a.properties == b.properties && a.item.actionName == b.item.actionName &&
           a.item.identity == b.item.identity &&
           std::equal(a.children.begin(), a.children.end(), b.children.begin(), b.children.end(),
                      [](const Node& c, const Node& d) { return looksAlike(c, d); });
}

template<typename Node>
void takeNumbers(Node& to, const Node& from) {
    to.id = from.id;
    for (std::size_t i = 0; i < to.children.size(); ++i)
        takeNumbers(to.children[i], from.children[i]);
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

DBusMenuTree::DBusMenuTree(IconProperties iconProperties)
    : m_iconProperties(std::move(iconProperties)) {
    m_root.properties.insert(QStringLiteral("children-display"), QStringLiteral("submenu"));
}

DBusMenuTree::Change DBusMenuTree::replace(const Menu& menu) {
    Node root;
    root.properties = m_root.properties;
    for (const MenuItem& item : menu)
        root.children.push_back(makeNode(item));
    if (looksAlike(root, m_root)) {
        takeNumbers(root, m_root);
        m_root = std::move(root);
        return Change::nothing;
    }
    for (Node& child : root.children)
        number(child);
    m_former = std::exchange(m_root, std::move(root));
    return Change::content;
}

const MenuItem* DBusMenuTree::item(int id) const {
    const Node* found = id == 0 ? nullptr : node(id);
    return found ? &found->item : nullptr;
}

const MenuItem* DBusMenuTree::meantBy(int id) const {
    if (const MenuItem* now = item(id))
        return now;
    const Node* former =
        findNode(m_former.children, [id](const Node& candidate) { return candidate.id == id; });
    if (!former)
        return nullptr;
    const Node* same = findNode(m_root.children, [&clicked = former->item](const Node& candidate) {
        return candidate.item.title == clicked.title && candidate.item.actionName == clicked.actionName &&
               candidate.item.identity == clicked.identity;
    });
    return same ? &same->item : nullptr;
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
        properties.insert(QStringLiteral("type"), QStringLiteral("separator"));
        return properties;
    }
    properties.insert(QStringLiteral("label"), busMenuLabel(item.title));
    if (!item.isEnabled)
        properties.insert(QStringLiteral("enabled"), false);
    if (item.state != MenuItem::CheckState::none) {
        properties.insert(QStringLiteral("toggle-type"), QStringLiteral("checkmark"));
        properties.insert(QStringLiteral("toggle-state"), item.state == MenuItem::CheckState::on ? 1 : 0);
    }
    if (!item.submenu.empty())
        properties.insert(QStringLiteral("children-display"), QStringLiteral("submenu"));
    if (!item.iconName.isEmpty() && m_iconProperties)
        properties.insert(m_iconProperties(item.iconName));
    if (!item.keyEquivalent.isEmpty()) {
        const QStringList keys{QStringLiteral("Control"), item.keyEquivalent.toUpper()};
        properties.insert(QStringLiteral("shortcut"), QVariant::fromValue(QList<QStringList>{keys}));
    }
    // The protocol knows neither; its "accessible-desc" would replace the label for screen readers.
    if (!item.iconDescription.isEmpty())
        properties.insert(QStringLiteral("x-zofra-icon-desc"), shownLine(item.iconDescription));
    if (!item.toolTip.isEmpty())
        properties.insert(QStringLiteral("x-zofra-tooltip"), shownLine(item.toolTip));
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
