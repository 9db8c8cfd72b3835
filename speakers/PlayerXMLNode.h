// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMap>
#include <QString>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace zofra {

/// One element of a small XML tree. Nothing here recurses, whatever the depth. One thread at a time.
class PlayerXMLNode {
public:
    using Pointer = std::shared_ptr<PlayerXMLNode>;

    PlayerXMLNode(QString elementName, QMap<QString, QString> elementAttributes)
        : name(std::move(elementName))
        , attributes(std::move(elementAttributes)) {}
    PlayerXMLNode(const PlayerXMLNode&) = delete;
    PlayerXMLNode& operator=(const PlayerXMLNode&) = delete;
    ~PlayerXMLNode() {
        // Takes the tree apart level by level: the default would recurse once per level of depth.
        auto doomed = std::move(children);
        while (!doomed.empty()) {
            const auto node = std::move(doomed.back());
            doomed.pop_back();
            if (node && node.use_count() == 1) {
                std::move(node->children.begin(), node->children.end(), std::back_inserter(doomed));
                node->children.clear();
            }
        }
    }

    /// Local name, without namespace prefix.
    const QString name;
    const QMap<QString, QString> attributes;
    /// All character data directly inside the element, white space included.
    QString text;
    /// In document order.
    std::vector<Pointer> children;

    /// The first direct child with exactly this name, or null.
    [[nodiscard]] Pointer child(const QString& elementName) const {
        const auto found = std::ranges::find(children, elementName,
                                             [](const auto& node) -> const QString& { return node->name; });
        return found == children.end() ? nullptr : *found;
    }
    /// Every node below this one with exactly this name, in document order.
    [[nodiscard]] std::vector<Pointer> descendants(const QString& elementName) const {
        auto all = std::numeric_limits<std::size_t>::max();
        return descendants(elementName, all);
    }
    /// The same among the first `visits` nodes, which are taken off it: a bound for many searches together.
    [[nodiscard]] std::vector<Pointer> descendants(const QString& elementName, std::size_t& visits) const {
        std::vector<Pointer> found;
        std::vector<Pointer> toVisit(children.rbegin(), children.rend());
        for (; visits > 0 && !toVisit.empty(); --visits) {
            auto node = std::move(toVisit.back());
            toVisit.pop_back();
            toVisit.insert(toVisit.end(), node->children.rbegin(), node->children.rend());
            if (node->name == elementName)
                found.push_back(std::move(node));
        }
        return found;
    }
};

} // namespace zofra
