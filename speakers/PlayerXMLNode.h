// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMap>
#include <QString>

#include <cstddef>
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
    ~PlayerXMLNode();

    /// Local name, without namespace prefix.
    const QString name;
    const QMap<QString, QString> attributes;
    /// All character data directly inside the element, white space included.
    QString text;
    /// In document order.
    std::vector<Pointer> children;

    /// The first direct child with exactly this name, or null.
    [[nodiscard]] Pointer child(const QString& elementName) const;
    /// Every node below this one with exactly this name, in document order.
    [[nodiscard]] std::vector<Pointer> descendants(const QString& elementName) const;
    /// The same among the first `visits` nodes, which are taken off it: a bound for many searches together.
    [[nodiscard]] std::vector<Pointer> descendants(const QString& elementName, std::size_t& visits) const;
};

} // namespace zofra
