// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <malloc.h>

namespace zofra {

/// Has the C library's allocator hold on to as little as this program needs. Called once, before the first
/// thread.
inline void tuneAllocator() {
    // By itself the allocator gives nearly each thread a heap of its own. Threads that come and go with every
    // search for players leave holes in all of them; one heap for all is 1.3 MB less, and stays that size.
    ::mallopt(M_ARENA_MAX, 1);
    // mpv takes 10 MB for a moment with each stream it opens. By itself the allocator stops, after the first
    // time, giving such blocks back to the system, and each further station leaves holes of that size behind.
    constexpr int givenBack = 256 * 1024;
    ::mallopt(M_MMAP_THRESHOLD, givenBack);
}

} // namespace zofra
