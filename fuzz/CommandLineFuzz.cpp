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
    const auto parsed = parseOptions(arguments, AppLanguage::en);
    if (!parsed) {
        // One line that a person can read.
        fuzz::require(!parsed.error().isEmpty() && !parsed.error().contains(u'\n'));
        return 0;
    }
    // What a second start hands over is what the running program takes.
    const auto& options = *parsed;
    const auto sent = toVariantMap(options);
    const auto taken = fromVariantMap(sent);
    fuzz::require(taken && toVariantMap(*taken) == sent);
    return 0;
}
