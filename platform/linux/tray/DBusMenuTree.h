// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MenuItem.h"
#include "platform/linux/tray/TrayTypes.h"

#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <optional>
#include <vector>

namespace zofra {

/// A menu as the menu protocol sees it: numbered items with properties. The root is 0. Numbers are never used
/// again: whatever a panel still shows of an older menu can not be taken for something else. Main thread
/// only.
class DBusMenuTree {
public:
    /// The protocol's properties for one of the program's drawings.
    using IconProperties = std::function<QVariantMap(const QString& symbolName)>;
    explicit DBusMenuTree(IconProperties iconProperties);

    enum class Change { nothing, content };
    /// Replaces the menu. When nothing that is shown differs, the items keep their numbers and only learn
    /// what they now stand for.
    Change replace(const Menu& menu);

    [[nodiscard]] bool contains(int id) const { return node(id) != nullptr; }
    /// The item with this number; null for the root and for unknown numbers.
    [[nodiscard]] const MenuItem* item(int id) const;
    /// The item that somebody means who chooses this number: that item, or, when the number is one of the
    /// menu before, for the menu may change while it is being clicked, the item that now has the same text
    /// and stands for the same.
    [[nodiscard]] const MenuItem* meantBy(int id) const;
    /// The menu before is shown no longer: its numbers mean nothing from now on.
    void forgetMenuBefore() { m_former = Node(); }
    /// The item and `depth` levels below it (all when negative), with the named properties (all when empty).
    [[nodiscard]] std::optional<BusMenuLayout> layout(int id, int depth, const QStringList& names) const;
    [[nodiscard]] std::optional<QVariantMap> properties(int id, const QStringList& names) const;
    /// Every number in use, the root first.
    [[nodiscard]] QList<int> ids() const;

private:
    struct Node {
        int id = 0;
        QVariantMap properties;
        MenuItem item;
        std::vector<Node> children;
    };

    [[nodiscard]] Node makeNode(const MenuItem& item) const;
    [[nodiscard]] QVariantMap itemProperties(const MenuItem& item) const;
    void number(Node& node);
    [[nodiscard]] const Node* node(int id) const;

    IconProperties m_iconProperties;
    Node m_root;
    /// The menu before.
    Node m_former;
    int m_lastId = 0;
};

} // namespace zofra
