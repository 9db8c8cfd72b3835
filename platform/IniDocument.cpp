// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/IniDocument.h"

#include <QString>

#include <algorithm>
#include <utility>

namespace zofra {
namespace {

constexpr char byteOrderMark[] = "\xEF\xBB\xBF";
const QByteArray generalSection = QByteArrayLiteral("General");

/// As `trimmed` has it.
bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isControlByte(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

bool isCommentStart(char c) {
    return c == ';' || c == '#';
}

/// Sections and names of [General] lose their section, in whatever case it is written.
QByteArray fullKey(const QByteArray& section, const QByteArray& name) {
    const bool isGeneral = section.isEmpty() || section.compare(generalSection, Qt::CaseInsensitive) == 0;
    return isGeneral ? name : section + '/' + name;
}

/// The name in a section's header; nothing when the line is none.
std::optional<QByteArray> sectionName(const QByteArray& line) {
    const auto close = line.indexOf(']');
    if (!line.startsWith('[') || close < 2)
        return std::nullopt;
    const auto rest = line.sliced(close + 1).trimmed();
    return rest.isEmpty() || isCommentStart(rest[0]) ? std::optional(line.sliced(1, close - 1).trimmed())
                                                     : std::nullopt;
}

/// The byte after a backslash in a quoted value; nothing when there is no such escape. Moves `at` behind it.
std::optional<char> escapedByte(QByteArrayView text, qsizetype& at) {
    if (at >= text.size())
        return std::nullopt;
    const char c = text[at++];
    switch (c) {
    case '\\':
    case '"':
        return c;
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case 't':
        return '\t';
    case 'x': {
        bool isHex = at + 2 <= text.size();
        const int value = isHex ? text.sliced(at, 2).toByteArray().toInt(&isHex, 16) : 0;
        at += 2;
        return isHex ? std::optional(static_cast<char>(value)) : std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

/// The content of a quoted value; nothing when it is not properly quoted and followed by no more than a
/// comment. Moves `at` from the opening quotation mark to behind the closing one.
std::optional<QByteArray> unquoted(QByteArrayView text, qsizetype& at) {
    QByteArray result;
    for (++at; at < text.size();) {
        const char c = text[at++];
        if (c == '"') {
            const auto rest = text.sliced(at).trimmed();
            return rest.isEmpty() || isCommentStart(rest[0]) ? std::optional(result) : std::nullopt;
        }
        if (c != '\\') {
            result += c;
            continue;
        }
        const auto byte = escapedByte(text, at);
        if (!byte)
            return std::nullopt;
        result += *byte;
    }
    return std::nullopt;
}

bool startsJson(QByteArrayView text) {
    return text.startsWith('[') || text.startsWith('{');
}

bool isText(const QByteArray& line) {
    const bool hasControl =
        std::ranges::any_of(line, [](char c) { return isControlByte(c) && c != '\t' && c != '\r'; });
    // A comment in an older encoding is a person's all the same.
    const auto start = line.trimmed();
    return !hasControl && line.size() <= IniDocument::maxLineBytes &&
           (line.isValidUtf8() || (!start.isEmpty() && isCommentStart(start[0])));
}

/// The value's own text in what stands after the `=`: without the blanks around it and the comment.
QByteArrayView ownText(QByteArrayView text) {
    text = text.trimmed();
    qsizetype end = 0;
    if (text.startsWith('"') && unquoted(text, end))
        return text.first(end);
    return startsJson(text) ? text : withoutIniComment(text);
}

QByteArray quoted(const QByteArray& value) {
    // Bytes that are no UTF-8 text would make the whole file unreadable for an editor.
    const bool isText = QString::fromUtf8(value).toUtf8() == value;
    QByteArray result = "\"";
    for (const char c : value) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            result += QByteArray("\\") + c;
        else if (c == '\n')
            result += "\\n";
        else if (c == '\r')
            result += "\\r";
        else if (c == '\t')
            result += "\\t";
        else if (isControlByte(c) || (byte >= 0x80 && !isText))
            result += "\\x" + QByteArray::number(byte, 16).rightJustified(2, '0');
        else
            result += c;
    }
    return result + '"';
}

} // namespace

QByteArrayView withoutIniComment(QByteArrayView line) {
    line = line.trimmed();
    for (qsizetype i = 0; i < line.size(); ++i) {
        if (isCommentStart(line[i]) && (i == 0 || isBlank(line[i - 1])))
            return line.first(i).trimmed();
    }
    return line;
}

QByteArray encodedIniValue(const QByteArray& value) {
    if (std::ranges::none_of(value, isControlByte) && decodedIniValue(value) == value &&
        QString::fromUtf8(value).toUtf8() == value)
        return value;
    return quoted(value);
}

QByteArray decodedIniValue(QByteArrayView text) {
    const auto own = ownText(text);
    qsizetype at = 0;
    if (own.startsWith('"')) {
        if (const auto value = unquoted(own, at))
            return *value;
    }
    return own.toByteArray();
}

IniDocument::IniDocument(const QByteArray& bytes) {
    QByteArray rest = bytes;
    m_hasByteOrderMark = rest.startsWith(byteOrderMark);
    if (m_hasByteOrderMark)
        rest.remove(0, 3);
    QByteArray section;
    for (qsizetype at = 0; at < rest.size();) {
        auto end = rest.indexOf('\n', at);
        const auto next = end < 0 ? rest.size() : end + 1;
        end = end < 0 ? rest.size() : end;
        if (end < next && end > at && rest[end - 1] == '\r')
            --end;
        Line line{rest.sliced(at, end - at), rest.sliced(end, next - end), {}, {}};
        at = next;
        const auto text = line.text.trimmed();
        const auto equals = text.indexOf('=');
        if (const auto name = sectionName(text))
            section = *name;
        else if (equals > 0 && !isCommentStart(text[0]))
            line.key = fullKey(section, text.first(equals).trimmed());
        line.section = section;
        m_lines.push_back(std::move(line));
    }
}

std::vector<IniDocument::Line>::const_iterator IniDocument::find(const QByteArray& key) const {
    const auto found =
        std::find_if(m_lines.rbegin(), m_lines.rend(), [&](const Line& line) { return line.key == key; });
    return found == m_lines.rend() ? m_lines.end() : std::prev(found.base());
}

std::optional<QByteArray> IniDocument::value(const QByteArray& key) const {
    const auto line = find(key);
    if (line == m_lines.end())
        return std::nullopt;
    return decodedIniValue(QByteArrayView(line->text).sliced(line->text.indexOf('=') + 1));
}

void IniDocument::setValue(const QByteArray& key, const QByteArray& value) {
    const auto line = find(key);
    if (line != m_lines.end()) {
        auto& text = m_lines[static_cast<std::size_t>(line - m_lines.begin())].text;
        const auto own = ownText(QByteArrayView(text).sliced(text.indexOf('=') + 1));
        const auto start = own.data() - text.constData();
        const auto tail = text.sliced(start + own.size());
        auto encoded = encodedIniValue(value);
        // JSON text is taken whole, so a comment can only follow it when it is quoted.
        if (startsJson(encoded) && !tail.trimmed().isEmpty())
            encoded = quoted(value);
        const auto gap = !tail.isEmpty() && !isBlank(tail[0]) ? QByteArray(" ") : QByteArray();
        text = text.first(start) + encoded + gap + tail;
        return;
    }
    const auto slash = key.indexOf('/');
    insertAtEndOfSection(slash < 0 ? generalSection : key.first(slash), key.sliced(slash + 1), value);
}

void IniDocument::insertAtEndOfSection(const QByteArray& section, const QByteArray& name,
                                       const QByteArray& value) {
    const auto lineEnd = newLineEnd();
    if (!m_lines.empty() && m_lines.back().lineEnd.isEmpty())
        m_lines.back().lineEnd = lineEnd;
    const auto isInSection = [&](const Line& line) {
        return !line.section.isEmpty() && line.section.compare(section, Qt::CaseInsensitive) == 0;
    };
    auto last = std::find_if(m_lines.rbegin(), m_lines.rend(), isInSection);
    if (last == m_lines.rend()) {
        m_lines.push_back({'[' + section + ']', lineEnd, {}, section});
        last = m_lines.rbegin();
    }
    // Before the blank lines that separate it from the next section.
    while (last->text.trimmed().isEmpty())
        ++last;
    m_lines.insert(last.base(),
                   Line{name + '=' + encodedIniValue(value), lineEnd, fullKey(section, name), section});
}

QByteArray IniDocument::newLineEnd() const {
    return !m_lines.empty() && !m_lines.front().lineEnd.isEmpty() ? m_lines.front().lineEnd
                                                                  : QByteArray("\n");
}

QByteArray IniDocument::bytes() const {
    QByteArray result = m_hasByteOrderMark ? QByteArray(byteOrderMark) : QByteArray();
    for (const auto& line : m_lines)
        result += line.text + line.lineEnd;
    return result;
}

bool IniDocument::isDamaged() const {
    return std::ranges::any_of(m_lines, [](const Line& line) { return !isText(line.text); });
}

void IniDocument::dropDamage() {
    std::erase_if(m_lines, [](const Line& line) { return !isText(line.text); });
}

} // namespace zofra
