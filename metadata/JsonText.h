// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QJsonDocument>
#include <QString>

#include <cstddef>
#include <optional>

namespace zofra {

// Pure functions, callable from any thread.

/// Decodes UTF-8; absent when any byte of it is not valid UTF-8. A byte order mark at the start is dropped.
[[nodiscard]] std::optional<QString> textFromUtf8(const QByteArray& bytes);

/// The JSON text inside a JSONP call, or the trimmed text itself when it is plain JSON (begins with "{" or
/// "["). Absent when it is neither. The callback's name consists of letters, digits, "_", "$" and ".", and
/// begins with a letter, "_" or "$"; letters and digits in the Unicode sense, a letter together with its
/// combining marks.
[[nodiscard]] std::optional<QString> unwrapJSONP(const QString& text);

/// How many values documents may hold altogether. By default as many as do not keep the main thread busy for
/// more than a few milliseconds; a mebibyte of the smallest ones would take a third of a second.
struct JsonBudget {
    std::size_t values = 10'000;
};

/// Reads one JSON document, an array or an object, nested at most 1024 deep; absent when it is anything else.
///
/// Stricter than the library underneath, which lets pass raw control characters in strings, unknown escapes,
/// halves of surrogate pairs and numbers that begin or end with a point. Where a key stands twice in an
/// object, the last one counts.
///
/// A document of more values than are left in `budget` is refused, and uses it up.
[[nodiscard]] std::optional<QJsonDocument> parseJsonText(const QByteArray& utf8, JsonBudget& budget);

} // namespace zofra
