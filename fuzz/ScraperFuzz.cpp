// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/FuzzBytes.h"
#include "metadata/ScraperPage.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zofra;
    const auto body = fuzz::bytes(data, size);
    const auto page = ScraperPage::fromBody(body);
    if (!page)
        return 0;
    for (const auto& found : {page->title, page->artist, page->track})
        fuzz::require(!found.contains(u'"') && body.contains(found.toUtf8()));
    const auto text = page->text();
    fuzz::require(!text || !text->isEmpty());
    return 0;
}
