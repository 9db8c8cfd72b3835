// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

namespace zofra {

/// The JSON text inside a JSONP call, or the trimmed text itself when it is plain JSON (begins with "{" or
/// "["). Absent when it is neither. The callback's name consists of letters, digits, "_", "$" and ".", and
/// begins with a letter, "_" or "$"; letters and digits in the Unicode sense, a letter together with its
/// combining marks. A pure function, callable from any thread.
[[nodiscard]] std::optional<QString> unwrapJSONP(const QString& text);

} // namespace zofra
