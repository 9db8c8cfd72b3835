// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RemoteOptions.h"
#include "fuzz/FuzzBytes.h"
#include "fuzz/FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zofra;
    fuzz::Input input(data, size);
    auto map = input.map();
    for (const auto* known :
         {"play", "stop", "toggle", "next", "previous", "station", "output", "volume", "stop-in", "notify",
          "quit", "headless", "no-discovery", "endpoints", "language"}) {
        if (input.byte() % 3 == 1)
            map.insert(QString::fromLatin1(known), input.value(2));
    }
    const auto taken = fromVariantMap(map);
    if (!taken) {
        fuzz::require(!taken.error().isEmpty());
        return 0;
    }
    const Options& options = *taken;
    // Nothing that was not understood is dropped in silence.
    fuzz::require(toVariantMap(options).size() <= map.size());
    fuzz::require(!options.station ||
                  stationNamed(map.value(QStringLiteral("station")).toString()) == options.station);
    return 0;
}
