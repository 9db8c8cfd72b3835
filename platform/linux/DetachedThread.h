// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <system_error>
#include <thread>

namespace zofra {

/// Runs `work` on a thread of its own that nobody waits for. False when there is none to be had.
inline bool startDetachedThread(const std::function<void()>& work) {
    try {
        std::thread(work).detach();
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

} // namespace zofra
