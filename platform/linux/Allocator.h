// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace zofra {

/// Has the C library's allocator hold on to as little as this program needs. Called once, before the first
/// thread.
void tuneAllocator();

} // namespace zofra
