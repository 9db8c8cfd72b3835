// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/PlayerXMLParser.h"

namespace zofra {

PlayerXMLParser::Verdict PlayerXMLParser::elementStarted(const QString& localName,
                                                         const QMap<QString, QString>& attributes) {
    if (stack.size() >= PlayerXMLLimits::depth || attributes.size() > PlayerXMLLimits::attributesPerElement ||
        ++m_elements > PlayerXMLLimits::elements)
        return Verdict::tooMuch;
    auto node = std::make_shared<PlayerXMLNode>(localName, attributes);
    if (stack.empty())
        root = node;
    else
        stack.back()->children.push_back(node);
    stack.push_back(std::move(node));
    return Verdict::goOn;
}

void PlayerXMLParser::charactersFound(QStringView characters) {
    if (!stack.empty())
        stack.back()->text += characters;
}

void PlayerXMLParser::cdataFound(const QByteArray& utf8) {
    charactersFound(QString::fromUtf8(utf8));
}

void PlayerXMLParser::elementEnded() {
    if (!stack.empty())
        stack.pop_back();
}

} // namespace zofra
