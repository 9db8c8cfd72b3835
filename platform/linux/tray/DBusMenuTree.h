// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MenuItem.h"
#include "platform/linux/tray/TrayTypes.h"

#include <functional>
#include <optional>
#include <vector>

namespace zofra {

/// A menu as the menu protocol sees it: numbered items with properties. The root is 0. An item keeps its
/// number for as long as it stays what it is: choosing a number does what the menu said that was shown with
/// it, or nothing. Numbers are never used again. Main thread only.
class DBusMenuTree {
public:
    /// What panels call one of the program's drawings; empty for those they do not have.
    using IconName = std::function<QString(const QString& symbolName)>;
    explicit DBusMenuTree(IconName iconName);

    /// What one menu differs by from the one before.
    struct Changes {
        /// Menus with other items than before, or in another order.
        QList<int> layouts;
        /// Of the items that are in both.
        QList<BusMenuProperties> updated;
        QList<BusMenuRemovedProperties> removed;
    };
    [[nodiscard]] Changes replace(const Menu& menu);

    [[nodiscard]] bool contains(int id) const { return node(id) != nullptr; }
    [[nodiscard]] bool hasSubmenu(int id) const { return contains(id) && !node(id)->children.empty(); }
    /// The item with this number; null for the root and for unknown numbers.
    [[nodiscard]] const MenuItem* item(int id) const;
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
    /// Numbers `node` and what is below it as what has become of `before`.
    void succeed(Node& node, const Node& before, Changes& changes);
    void number(Node& node);
    [[nodiscard]] const Node* node(int id) const;

    IconName m_iconName;
    Node m_root;
    int m_lastId = 0;
};

} // namespace zofra
