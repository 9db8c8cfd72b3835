// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/FuzzBytes.h"
#include "speakers/NetworkPlayerProtocol.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zofra;
    const QUrl url(QStringLiteral("http://10.0.0.5:1400/xml/device_description.xml"));
    const auto speaker = NetworkPlayerProtocol::speaker(QString::fromUtf8(fuzz::bytes(data, size)), url);
    if (!speaker)
        return 0;
    fuzz::require(!speaker->id.isEmpty() && speaker->ip == url.host());
    fuzz::require(!(speaker->isSub && speaker->isZofra()));
    for (const auto& path : {speaker->transportPath, speaker->renderingPath, speaker->topologyPath})
        fuzz::require(!speaker->endpoint(path, QStringLiteral("/fallback")).host().isEmpty());
    fuzz::require(NetworkPlayerProtocol::rooms({*speaker}).size() == (speaker->isSub ? 0 : 1));
    return 0;
}
