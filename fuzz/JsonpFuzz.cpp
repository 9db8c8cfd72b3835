// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/FuzzBytes.h"
#include "metadata/JsonText.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zofra;
    const auto text = QString::fromUtf8(fuzz::bytes(data, size));
    const auto inner = unwrapJSONP(text);
    if (!inner)
        return 0;
    fuzz::require(!inner->isEmpty() && *inner == inner->trimmed() && text.contains(*inner));
    // The same with a call around it.
    fuzz::require(unwrapJSONP(QStringLiteral(" a.b ( ") + *inner + QStringLiteral(" ) ; ;")) == inner);
    return 0;
}
