// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/FuzzBytes.h"
#include "platform/ForeignText.h"
#include "speakers/NetworkPlayerProtocol.h"
#include "speakers/PlainOrder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zofra;
    const auto url = NetworkPlayerProtocol::ssdpLocation(QString::fromUtf8(fuzz::bytes(data, size)));
    if (!url)
        return 0;
    fuzz::require(url->isValid() && !url->host().isEmpty() && url->userInfo().isEmpty());
    fuzz::require(url->scheme() == QLatin1String("http") || url->scheme() == QLatin1String("https"));
    fuzz::require(!quotedList(sortedAddresses({*url})).contains(u'\n'));
    return 0;
}
