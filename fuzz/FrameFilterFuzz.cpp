// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/FuzzBytes.h"
#include "platform/linux/audio/FrameFilter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zofra;
    const auto bytes = fuzz::bytes(data, size);
    FrameFilter filter;
    filter.put(bytes);
    QByteArray passed(bytes.size(), '\0');
    passed.resize(filter.take(passed.data(), passed.size()));
    fuzz::require(filter.isEmpty());
    fuzz::require(filter.bytesWithoutSound() <= bytes.size());
    fuzz::require(passed.isEmpty() == (filter.sound() == filter.sound().zero()));
    // What has passed once passes again as it is; twice in a row, for two frames are no beginning.
    const QByteArray doubled = passed + passed;
    FrameFilter again;
    again.put(doubled);
    QByteArray twice(doubled.size(), '\0');
    twice.resize(again.take(twice.data(), twice.size()));
    fuzz::require(twice == doubled);
    return 0;
}
