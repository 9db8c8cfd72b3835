// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mpv/client.h>
#include <mpv/stream_cb.h>
#include <mutex>
#include <string>
#include <vector>

namespace zofra::test {

/// What a test sees of the library that stands in for libmpv. One per test, reached through `fakeMpvControl`.
/// Every member is guarded by the mutex.
struct FakeMpvControl {
    /// An event as mpv would hand it out, with what its data pointer points to.
    struct Event {
        mpv_event event{};
        mpv_event_start_file start{};
        mpv_event_end_file end{};
        mpv_event_property property{};
        int flag = 0;
        mpv_event_command command{};
        std::string key;
        char* keyPointer = nullptr;
        mpv_node value{};
        mpv_node_list list{};
    };
    struct Instance {
        std::deque<std::unique_ptr<Event>> events;
        std::unique_ptr<Event> handedOut;
        void (*wakeup)(void*) = nullptr;
        void* wakeupData = nullptr;
        std::uint64_t lastCommandId = 0;
        bool isInitialized = false;
        bool isEnded = false;
    };

    std::mutex mutex;
    std::condition_variable changed;
    /// Every mpv made, in order; they stay here when they have ended.
    std::vector<std::unique_ptr<Instance>> instances;
    /// Commands and properties as text, in order, of all instances.
    std::vector<std::string> calls;
    std::map<std::string, std::string> options;
    /// Of the streams that come from outside of mpv.
    std::vector<std::string> protocols;
    int addProtocolResult = 0;
    std::string refusedOption;
    int initializeResult = 0;
    bool failsToCreate = false;
    bool holdsEnding = false;
    unsigned long apiVersion = MPV_CLIENT_API_VERSION;
};

/// Name and type of the library's one additional function: sets what the library works on.
constexpr const char* fakeMpvControlName = "fake_mpv_set_control";
using FakeMpvSetControl = void (*)(FakeMpvControl*);

} // namespace zofra::test
