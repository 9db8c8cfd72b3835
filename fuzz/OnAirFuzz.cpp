// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/FuzzBytes.h"
#include "metadata/OnAirItem.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zofra;
    constexpr double now = 1'700'000'000;
    const auto items = onAirItems(fuzz::bytes(data, size), QStringLiteral("6"));
    if (!items)
        return 0;
    const auto best = selectBest(*items, now);
    fuzz::require(best.has_value() == !items->empty());
    fuzz::require(!best || std::find(items->begin(), items->end(), *best) != items->end());
    const auto text = onAirText(*items, now);
    const bool any = std::any_of(items->begin(), items->end(),
                                 [](const auto& item) { return item.formatted().has_value(); });
    fuzz::require(text.has_value() == any && (!text || !text->isEmpty()));
    return 0;
}
