// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdlib>
#include <functional>
#include <future>
#include <poll.h>
#include <sched.h>
#include <string>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace zofra::test {

/// Runs `ip` with these words in the caller's network namespace; whether it succeeded.
inline bool ip(const std::string& words) {
    return std::system(("PATH=$PATH:/usr/sbin:/sbin ip " + words + " 2>/dev/null").c_str()) == 0;
}

/// Runs any command line in the caller's network namespace; whether it succeeded.
inline bool command(const std::string& line) {
    return std::system(("PATH=$PATH:/usr/sbin:/sbin; " + line + " >/dev/null 2>&1").c_str()) == 0;
}

/// Waits until a link carries: what is sent before that is lost. False when that takes longer than some
/// seconds.
inline bool carries(const std::string& link) {
    for (int i = 0; i < 200; ++i) {
        if (command("ip -o link show " + link + " | grep -q 'state UP'"))
            return true;
        ::poll(nullptr, 0, 20);
    }
    return false;
}

/// Runs `work` on a thread with a network namespace of its own, where "near" has the address 10.77.0.1/24 and
/// its other end, "far", sits in another such namespace with 10.77.0.2/24. `far` runs there first, on its own
/// thread; what it opens stays in that namespace. False when the system has no namespaces for us.
inline bool inNamespaces(const std::function<void()>& far, const std::function<void()>& work) {
    bool ready = false;
    std::thread near([&] {
        // An ordinary user needs a user namespace to be allowed a network of his own, and that only a process
        // of one thread may have; so without root there is no test here.
        if (::unshare(CLONE_NEWNET) != 0 || !ip("link set lo up"))
            return;
        std::promise<long> farThread;
        std::promise<bool> linked;
        std::promise<bool> farReady;
        std::promise<void> finished;
        std::thread other([&] {
            const bool own = ::unshare(CLONE_NEWNET) == 0;
            farThread.set_value(own ? ::syscall(SYS_gettid) : 0);
            const bool isUp = linked.get_future().get() && ip("address add 10.77.0.2/24 brd + dev far") &&
                              ip("link set far up") && carries("far");
            if (isUp)
                far();
            farReady.set_value(isUp);
            // The namespace, and with it the link, ends with its last thread.
            finished.get_future().wait();
        });
        const long thread = farThread.get_future().get();
        linked.set_value(thread != 0 && ip("link add near type veth peer name far") &&
                         ip("link set far netns " + std::to_string(thread)) &&
                         ip("address add 10.77.0.1/24 brd + dev near") && ip("link set near up"));
        ready = farReady.get_future().get() && carries("near");
        if (ready)
            work();
        finished.set_value();
        other.join();
    });
    near.join();
    return ready;
}

} // namespace zofra::test
