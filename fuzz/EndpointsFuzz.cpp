// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/FuzzBytes.h"
#include "stations/EndpointsFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zofra;
    const auto parsed = endpoints::parse(fuzz::bytes(data, size));
    if (!parsed) {
        fuzz::require(!parsed.error().reason.isEmpty() && parsed.error().line >= 0);
        return 0;
    }
    int line = 0;
    for (const auto& entry : *parsed) {
        fuzz::require(entry.line > line);
        line = entry.line;
        const bool isHeader = entry.kind == endpoints::Entry::Kind::sectionHeader;
        fuzz::require(!isHeader || (entry.key.isEmpty() && entry.value.isEmpty()));
        const auto mistake = endpoints::mistakeInHost(entry.value);
        fuzz::require(!mistake || !mistake->isEmpty());
    }
    return 0;
}
