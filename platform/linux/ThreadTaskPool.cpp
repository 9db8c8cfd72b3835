// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ThreadTaskPool.h"

#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

namespace zofra {

namespace {

constexpr std::chrono::seconds retryInterval{1};

bool startDetachedThread(const ThreadTaskPool::Work& work) {
    try {
        std::thread(work).detach();
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

void start(MainQueue& mainQueue, const ThreadTaskPool::StartThread& startThread, ThreadTaskPool::Work work) {
    if (!startThread(work))
        mainQueue.asyncAfter(retryInterval, [&mainQueue, startThread, work = std::move(work)] {
            start(mainQueue, startThread, work);
        });
}

} // namespace

ThreadTaskPool::ThreadTaskPool(MainQueue& mainQueue)
    : ThreadTaskPool(mainQueue, startDetachedThread) {}

ThreadTaskPool::ThreadTaskPool(MainQueue& mainQueue, StartThread startThread)
    : m_mainQueue(mainQueue)
    , m_startThread(std::move(startThread)) {}

void ThreadTaskPool::async(Work work) {
    start(m_mainQueue, m_startThread, std::move(work));
}

} // namespace zofra
