// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainQueue.h"

namespace zofra {

/// Loading some two hundred libraries reads pages that nobody needs afterwards: symbol and relocation tables,
/// start-up code. They stay counted as this program's memory until somebody says that they may go.
class LibraryPages {
public:
    /// Lets go, soon and once per run, of every page that can be had back from a library's file. What is
    /// still needed comes back by itself. Main thread only.
    static void giveBackOnce(MainQueue& mainQueue);
    /// Lets go now. Callable from any thread. Returns the bytes covered.
    static std::size_t giveBack();
};

} // namespace zofra
