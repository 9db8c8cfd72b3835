// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/PlayerXMLParser.h"

#include <expat.h>
#include <memory>
#include <type_traits>

namespace zofra {

bool PlayerXMLParser::elementStarted(const QString& localName, const QMap<QString, QString>& attributes) {
    if (stack.size() >= PlayerXMLLimits::depth || attributes.size() > PlayerXMLLimits::attributesPerElement ||
        ++m_elements > PlayerXMLLimits::elements)
        return false;
    auto node = std::make_shared<PlayerXMLNode>(localName, attributes);
    if (stack.empty())
        root = node;
    else
        stack.back()->children.push_back(node);
    stack.push_back(std::move(node));
    return true;
}

namespace {

/// Stands between the parts of a name: no name and no namespace address can hold it.
constexpr char separator = '\n';

/// Of "address, local name, prefix", as many of them as there are.
QString localName(const QString& name) {
    return name.contains(QLatin1Char(separator)) ? name.section(QLatin1Char(separator), 1, 1) : name;
}

QString qualifiedName(const QString& name) {
    const auto prefix = name.section(QLatin1Char(separator), 2, 2);
    return prefix.isEmpty() ? localName(name) : prefix + u':' + localName(name);
}

/// Hands the events of one document to a parser.
class Reader {
public:
    PlayerXMLNode::Pointer read(const QByteArray& utf8) {
        if (!m_expat)
            return nullptr;
        XML_SetUserData(m_expat.get(), this);
        XML_SetReturnNSTriplet(m_expat.get(), 1);
        XML_SetElementHandler(m_expat.get(), &Reader::started, &Reader::ended);
        XML_SetCharacterDataHandler(m_expat.get(), &Reader::characters);
        XML_SetStartDoctypeDeclHandler(m_expat.get(), &Reader::documentType);
        const auto status = XML_Parse(m_expat.get(), utf8.constData(), static_cast<int>(utf8.size()), 1);
        return status == XML_STATUS_OK ? m_parser.root : nullptr;
    }

private:
    struct Free {
        void operator()(XML_Parser expat) const { XML_ParserFree(expat); }
    };

    static Reader& self(void* data) { return *static_cast<Reader*>(data); }
    void refuse() { XML_StopParser(m_expat.get(), XML_FALSE); }

    static void started(void* data, const char* name, const char** attributes) {
        QMap<QString, QString> map;
        for (const char** at = attributes; *at != nullptr; at += 2) // NOLINT(*-pointer-arithmetic)
            map.insert(qualifiedName(QString::fromUtf8(at[0])), QString::fromUtf8(at[1])); // NOLINT
        if (!self(data).m_parser.elementStarted(localName(QString::fromUtf8(name)), map))
            self(data).refuse();
    }
    static void ended(void* data, const char*) { self(data).m_parser.elementEnded(); }
    /// Called for CDATA as well.
    static void characters(void* data, const char* utf8, int length) {
        self(data).m_parser.cdataFound(QByteArray::fromRawData(utf8, length));
    }
    static void documentType(void* data, const char*, const char*, const char*, int) { self(data).refuse(); }

    PlayerXMLParser m_parser;
    /// Reading UTF-8, whatever encoding the document declares.
    std::unique_ptr<std::remove_pointer_t<XML_Parser>, Free> m_expat{XML_ParserCreateNS("UTF-8", separator)};
};

} // namespace

PlayerXMLNode::Pointer NetworkPlayerProtocol::xml(const QString& text) {
    if (text.size() > PlayerXMLLimits::characters || text.contains(u"<!DOCTYPE", Qt::CaseInsensitive))
        return nullptr;
    return Reader().read(text.toUtf8());
}

} // namespace zofra
