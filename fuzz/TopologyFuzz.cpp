// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/FuzzBytes.h"
#include "speakers/NetworkPlayerProtocol.h"
#include "speakers/SoapRequest.h"

namespace {

using namespace zofra;

void check(const QString& answer) {
    const auto members = NetworkPlayerProtocol::topology(answer);
    fuzz::require(members.size() <= NetworkPlayerProtocol::maxTopologyMembers);
    for (const auto& member : members)
        fuzz::require(!member.uuid.isEmpty() &&
                      (!member.descriptionURL || !member.descriptionURL->host().isEmpty()));
    const auto merged = NetworkPlayerProtocol::merge({members, members});
    fuzz::require(merged.size() <= members.size() && merged == NetworkPlayerProtocol::merge({merged}));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto text = QString::fromUtf8(fuzz::bytes(data, size));
    // As a whole answer, and as the escaped report inside of one.
    check(text);
    check(QStringLiteral("<r><ZoneGroupState>") + escapedForXml(text) +
          QStringLiteral("</ZoneGroupState></r>"));
    return 0;
}
