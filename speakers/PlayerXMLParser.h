// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/PlayerXMLNode.h"

#include <QByteArray>
#include <QStringView>

#include <cstddef>
#include <vector>

namespace zofra {

/// Bounds of what a player may send. Real reports stay far below each of them.
struct PlayerXMLLimits {
    static constexpr qsizetype characters = 1'048'576;
    static constexpr std::size_t depth = 64;
    static constexpr int attributesPerElement = 256;
    static constexpr int elements = 20'000;
    /// Of a name, an id or an address that is kept beyond the document.
    static constexpr qsizetype fieldLength = 1024;
};

/// Builds a tree from the events of a streaming XML parser. One document each.
class PlayerXMLParser {
public:
    /// An element begins. False when the document goes beyond `PlayerXMLLimits`.
    [[nodiscard]] bool elementStarted(const QString& localName, const QMap<QString, QString>& attributes);
    /// Character data; nothing outside of the root.
    void charactersFound(QStringView characters) {
        if (!stack.empty())
            stack.back()->text += characters;
    }
    /// A CDATA block; bytes that are no UTF-8 are replaced.
    void cdataFound(const QByteArray& utf8) { charactersFound(QString::fromUtf8(utf8)); }
    /// The innermost open element ends; its name is not looked at.
    void elementEnded() {
        if (!stack.empty())
            stack.pop_back();
    }

    /// The document's element, once begun.
    PlayerXMLNode::Pointer root;
    /// The open elements, innermost last.
    std::vector<PlayerXMLNode::Pointer> stack;

private:
    int m_elements = 0;
};

namespace NetworkPlayerProtocol {

/// The root of an XML document, or null. Document types are refused, and with them every entity but the five
/// of XML itself; `PlayerXMLLimits` hold. Takes linear time.
[[nodiscard]] PlayerXMLNode::Pointer xml(const QString& text);

} // namespace NetworkPlayerProtocol

} // namespace zofra
