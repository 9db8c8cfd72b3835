// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/LogText.h"

namespace zofra {

QString oneLine(const QString& text) {
    constexpr qsizetype longest = 300;
    QString line = text.left(longest);
    for (auto& character : line) {
        if (character.category() == QChar::Other_Control || character.category() == QChar::Other_Format)
            character = u' ';
    }
    return line.simplified();
}

} // namespace zofra
