// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/PlayerXMLNode.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace zofra {

PlayerXMLNode::~PlayerXMLNode() {
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

PlayerXMLNode::Pointer PlayerXMLNode::child(const QString& elementName) const {
    const auto found = std::ranges::find(children, elementName,
                                         [](const auto& node) -> const QString& { return node->name; });
    return found == children.end() ? nullptr : *found;
}

std::vector<PlayerXMLNode::Pointer> PlayerXMLNode::descendants(const QString& elementName) const {
    auto all = std::numeric_limits<std::size_t>::max();
    return descendants(elementName, all);
}

std::vector<PlayerXMLNode::Pointer> PlayerXMLNode::descendants(const QString& elementName,
                                                               std::size_t& visits) const {
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

} // namespace zofra
