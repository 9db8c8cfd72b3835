// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <optional>
#include <vector>

namespace zofra {

/// The text of an INI file, kept line by line so that writing one key leaves every other byte as a person
/// wrote it: comments, unknown keys, lines that make no sense. A plain value.
///
/// Keys are `name` in [General] (or before the first section) and `section/name` elsewhere. Where a key
/// stands twice the last one counts. A value is the rest of its line without blanks around it; one that
/// begins with a quotation mark is unquoted (`\\ \" \n \r \t \xHH`), one that begins with `[` or `{` is JSON
/// text and taken whole, any other ends before a comment (blank and `;` or `#`).
class IniDocument {
public:
    struct Line {
        /// Without its line end.
        QByteArray text;
        QByteArray lineEnd;
        /// Full key, or empty when the line has none.
        QByteArray key;
        /// The section it stands in, or opens.
        QByteArray section;
    };
    /// A longer line holds nothing that a program here would write.
    static constexpr qsizetype maxLineBytes = 1'048'576;

    IniDocument() = default;
    explicit IniDocument(const QByteArray& bytes);

    [[nodiscard]] std::optional<QByteArray> value(const QByteArray& key) const;
    /// Replaces the value where it stands, else adds it at the end of its section.
    void setValue(const QByteArray& key, const QByteArray& value);
    [[nodiscard]] QByteArray bytes() const;
    [[nodiscard]] const std::vector<Line>& lines() const { return m_lines; }

    /// Whether lines are no text at all: control characters, not UTF-8, or endless. Mere nonsense is text.
    [[nodiscard]] bool isDamaged() const;
    /// Takes those lines out. Whoever does keeps what `bytes` was before.
    void dropDamage();

private:
    [[nodiscard]] std::vector<Line>::const_iterator find(const QByteArray& key) const;
    void insertAtEndOfSection(const QByteArray& section, const QByteArray& name, const QByteArray& value);
    [[nodiscard]] QByteArray newLineEnd() const;

    bool m_hasByteOrderMark = false;
    std::vector<Line> m_lines;
};

/// What stands after the `=`: the value itself where that is safe, else quoted. Always one line.
[[nodiscard]] QByteArray encodedIniValue(const QByteArray& value);
/// `line` without the blanks around it and its comment, which begins it or follows a blank.
[[nodiscard]] QByteArrayView withoutIniComment(QByteArrayView line);
/// The value of what stands after the `=`.
[[nodiscard]] QByteArray decodedIniValue(QByteArrayView text);

} // namespace zofra
