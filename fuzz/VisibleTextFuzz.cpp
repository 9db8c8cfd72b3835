// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/FuzzBytes.h"
#include "platform/ForeignText.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zofra;
    const QString text = QString::fromUtf8(fuzz::bytes(data, size));
    const QString shown = visibleText(text);
    fuzz::require(std::none_of(shown.begin(), shown.end(), [](QChar one) {
        return one.category() == QChar::Other_Control || one.category() == QChar::Separator_Line ||
               one.category() == QChar::Separator_Paragraph || (one >= u'\u202a' && one <= u'\u202e') ||
               (one >= u'\u2066' && one <= u'\u2069');
    }));
    const QString cut = cutText(text, 60);
    fuzz::require(cut.size() <= 60 && (text.size() > 60 || cut == text));
    return 0;
}
