// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/FuzzBytes.h"
#include "platform/linux/audio/FrameStart.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zofra;
    const auto bytes = fuzz::bytes(data, size);
    const auto start = frameStart(bytes);
    if (!start) {
        fuzz::require(bytes.size() < frameSearchBytes);
        return 0;
    }
    fuzz::require(*start >= 0 && *start < frameSearchBytes);
    // A beginning once found is not found elsewhere when more has come.
    fuzz::require(*start == 0 || frameStart(bytes.mid(*start)) == 0);
    return 0;
}
