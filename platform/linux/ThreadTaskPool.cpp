// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ThreadTaskPool.h"

#include <chrono>

namespace zofra {

namespace {

constexpr std::chrono::seconds retryInterval{1};

void start(MainQueue& mainQueue, const ThreadTaskPool::StartThread& startThread, ThreadTaskPool::Work work) {
    if (!startThread(work))
        mainQueue.asyncAfter(retryInterval, [&mainQueue, startThread, work = std::move(work)] {
            start(mainQueue, startThread, work);
        });
}

} // namespace

void ThreadTaskPool::async(Work work) {
    start(m_mainQueue, m_startThread, std::move(work));
}

} // namespace zofra
