// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/FuzzBytes.h"
#include "metadata/LiveSocket.h"

#include <QJsonDocument>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zofra;
    const auto frame = QString::fromUtf8(fuzz::bytes(data, size));
    static_cast<void>(sockJSFrameKind(frame));
    // A track without a station is for everyone, one with a station for that station only.
    for (const RadioStation station : {RadioStation::zofra, RadioStation::belRTL}) {
        const auto track = liveTrackInFrame(frame, station);
        if (!track)
            continue;
        fuzz::require(!track->formattedCurrent().isEmpty());
        fuzz::require(track->formattedCurrent() == track->formattedCurrent().trimmed());
        ZofraLivePlayEvent event;
        event.data = track;
        JsonBudget budget;
        fuzz::require(decodeDocument<ZofraLivePlayEvent>(QJsonDocument(toJson(event).toObject()).toJson(),
                                                         budget) == event);
    }
    return 0;
}
