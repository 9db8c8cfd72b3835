// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/FuzzBytes.h"
#include "platform/linux/net/WebSocketWire.h"

#include <algorithm>
#include <vector>

namespace {

constexpr std::size_t cap = 4096;

std::vector<zofra::WebSocketEvent> eventsIn(QByteArrayView bytes, qsizetype piece) {
    zofra::WebSocketReader reader(cap);
    std::vector<zofra::WebSocketEvent> events;
    while (!bytes.isEmpty()) {
        auto part = bytes.first(std::min(piece, bytes.size()));
        bytes = bytes.sliced(part.size());
        while (auto event = reader.next(part))
            events.push_back(*std::move(event));
    }
    return events;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zofra;
    const auto bytes = fuzz::bytes(data, size);
    // However it arrives, it means the same.
    const auto whole = eventsIn(bytes, bytes.size() + 1);
    const auto pieces = eventsIn(bytes, 3);
    fuzz::require(whole.size() == pieces.size());
    for (std::size_t i = 0; i < whole.size(); ++i) {
        fuzz::require(whole[i].kind == pieces[i].kind && whole[i].text == pieces[i].text &&
                      whole[i].bytes == pieces[i].bytes && whole[i].closeCode == pieces[i].closeCode);
        fuzz::require(static_cast<std::size_t>(whole[i].bytes.size()) <= cap);
        fuzz::require(static_cast<std::size_t>(whole[i].text.toUtf8().size()) <= cap);
    }
    return 0;
}
