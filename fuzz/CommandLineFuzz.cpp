// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Options.h"
#include "app/RemoteOptions.h"
#include "fuzz/FuzzBytes.h"
#include "fuzz/FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zofra;
    fuzz::Input input(data, size);
    QStringList arguments;
    while (!input.isEmpty() && arguments.size() < 64)
        arguments << input.text();
    const auto parsed = parseOptions(arguments);
    if (const auto* mistake = std::get_if<QString>(&parsed)) {
        // One line that a person can read.
        fuzz::require(!mistake->isEmpty() && !mistake->contains(u'\n'));
        return 0;
    }
    // What a second start hands over is what the running program takes.
    const auto& options = std::get<Options>(parsed);
    const auto sent = toVariantMap(options);
    const auto taken = fromVariantMap(sent);
    const auto* same = std::get_if<Options>(&taken);
    fuzz::require(same && toVariantMap(*same) == sent);
    return 0;
}
