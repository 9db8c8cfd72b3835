// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RemoteOptions.h"
#include "fuzz/FuzzBytes.h"
#include "fuzz/FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zofra;
    fuzz::Input input(data, size);
    auto map = input.map();
    for (const auto* known : {"play", "station", "output", "quit", "headless", "no-discovery", "endpoints"}) {
        if (input.byte() % 3 == 1)
            map.insert(QString::fromLatin1(known), input.value(2));
    }
    const auto taken = fromVariantMap(map);
    if (const auto* refusal = std::get_if<QString>(&taken)) {
        fuzz::require(!refusal->isEmpty());
        return 0;
    }
    const auto& options = std::get<Options>(taken);
    // Nothing that was not understood is dropped in silence.
    fuzz::require(toVariantMap(options).size() <= map.size());
    fuzz::require(!options.station ||
                  stationNamed(map.value(QStringLiteral("station")).toString()) == options.station);
    return 0;
}
