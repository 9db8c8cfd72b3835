// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/FuzzBytes.h"
#include "speakers/RoomCache.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zofra;
    const auto rooms = decodeRooms(fuzz::bytes(data, size));
    if (!rooms)
        return 0;
    const auto again = encodeRooms(*rooms);
    fuzz::require(again.size() <= maxCacheBytes);
    const auto kept = decodeRooms(again);
    fuzz::require(kept && (kept == rooms || kept->size() < rooms->size()));
    for (const auto& room : *rooms)
        fuzz::require(!room.coordinator.deviceDescriptionURL().isEmpty());
    return 0;
}
