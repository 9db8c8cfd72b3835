// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <cstdio>

namespace zofra {

/// What the program answers to whoever started it.
enum ExitStatus : int { fine = 0, failed = 1, misused = 2 };

/// One line on standard error, and the status to end with.
inline int refuse(ExitStatus status, const QString& line) {
    std::fprintf(stderr, "zofrazofra: %s\n", qUtf8Printable(line));
    return status;
}

/// One line or more on standard output. `failed` when nobody takes it.
inline int print(const QString& text) {
    std::printf("%s\n", qUtf8Printable(text));
    return std::fflush(stdout) == 0 ? fine : failed;
}

/// `text` in lines of at most `width` characters, broken between words where there are any.
inline QStringList wrapped(const QString& text, qsizetype width) {
    QStringList lines;
    QString line;
    for (QString word : text.split(u' ', Qt::SkipEmptyParts)) {
        if (!line.isEmpty() && line.size() + 1 + word.size() > width) {
            lines.append(line);
            line.clear();
        }
        while (word.size() > width) {
            lines.append(word.left(width));
            word.remove(0, width);
        }
        line += (line.isEmpty() || word.isEmpty() ? QString() : u" "_qs) + word;
    }
    if (!line.isEmpty() || lines.isEmpty())
        lines.append(line);
    return lines;
}

} // namespace zofra
