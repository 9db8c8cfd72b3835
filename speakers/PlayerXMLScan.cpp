// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/PlayerXMLParser.h"

namespace zofra {

namespace {

/// Walks over a document's markup without building anything.
class Scan {
public:
    explicit Scan(QStringView xml)
        : m_xml(xml) {}

    bool isTame() {
        while (m_at < m_xml.size()) {
            const auto character = m_xml[m_at];
            if (character == u'<' ? !markup() : character == u'&' ? !reference() : !step())
                return false;
        }
        return true;
    }

private:
    bool step() {
        ++m_at;
        return true;
    }

    bool startsWith(QLatin1String text) const { return m_xml.sliced(m_at).startsWith(text); }

    /// Goes behind `end`; false when it does not come.
    bool skipPast(QLatin1String end, qsizetype from) {
        const auto found = m_xml.indexOf(end, from);
        if (found < 0)
            return false;
        m_at = found + end.size();
        return true;
    }

    bool markup() {
        if (startsWith(QLatin1String("<!--")))
            return skipPast(QLatin1String("-->"), m_at + 4);
        if (startsWith(QLatin1String("<![CDATA[")))
            return skipPast(QLatin1String("]]>"), m_at + 9);
        if (startsWith(QLatin1String("<!")))
            return false;
        if (startsWith(QLatin1String("<?")))
            return processingInstruction();
        return tag();
    }

    bool processingInstruction() {
        const auto nameStart = m_at + 2;
        if (!skipPast(QLatin1String("?>"), nameStart))
            return false;
        const auto inside = m_xml.sliced(nameStart, m_at - 2 - nameStart);
        qsizetype length = 0;
        while (length < inside.size() && !inside[length].isSpace())
            ++length;
        return length <= PlayerXMLLimits::nameLength;
    }

    /// From `&` to `;`: every reference without declarations is short.
    bool reference() {
        const auto end =
            m_xml.sliced(m_at, qMin(m_xml.size() - m_at, qsizetype{PlayerXMLLimits::referenceLength}))
                .indexOf(u';');
        m_at += end;
        return end >= 0;
    }

    bool tag() {
        int attributes = 0;
        qsizetype nameStart = ++m_at;
        while (m_at < m_xml.size()) {
            const auto character = m_xml[m_at];
            if (character == u'>')
                return step();
            if (character == u'<')
                return false;
            if (character == u'"' || character == u'\'') {
                if (!quoted(character))
                    return false;
                nameStart = m_at;
                continue;
            }
            if (character == u'=' &&
                (!attribute(nameStart) || ++attributes > PlayerXMLLimits::attributesPerElement))
                return false;
            ++m_at;
            if (character == u'=' || character.isSpace())
                nameStart = m_at;
            else if (m_at - nameStart > PlayerXMLLimits::nameLength)
                return false;
        }
        return false;
    }

    /// Counts an attribute that declares a namespace: each use of a prefix is looked up among all of them.
    bool attribute(qsizetype nameStart) {
        return !m_xml.sliced(nameStart).startsWith(QLatin1String("xmlns")) ||
               ++m_namespaces <= PlayerXMLLimits::namespaceDeclarations;
    }

    bool quoted(QChar quote) {
        for (++m_at; m_at < m_xml.size();) {
            const auto character = m_xml[m_at];
            if (character == quote)
                return step();
            if (character == u'&' ? !reference() : !step())
                return false;
        }
        return false;
    }

    QStringView m_xml;
    qsizetype m_at = 0;
    int m_namespaces = 0;
};

} // namespace

bool isTamePlayerXML(QStringView xml) {
    return xml.size() <= PlayerXMLLimits::characters && Scan(xml).isTame();
}

} // namespace zofra
