// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainQueue.h"
#include "platform/Observable.h"
#include "platform/linux/Descriptor.h"

#include <QByteArray>
#include <QList>
#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace zofra {

/// Tells when the computer's network has changed: an interface came up or went, an address or a default route
/// came or went. The kernel's news are gathered for a moment, and what leaves everything as it was (renewed
/// leases) is not told. Main thread only.
class NetworkChange final {
public:
    /// `queue` must outlive it.
    explicit NetworkChange(MainQueue& queue);
    NetworkChange(const NetworkChange&) = delete;
    NetworkChange& operator=(const NetworkChange&) = delete;

    [[nodiscard]] ObservationToken observeChanged(std::function<void()> handler);

    /// The present state as text, for comparison.
    [[nodiscard]] static QByteArray snapshot();
    /// The default routes in the kernel's tables, /proc/net/route and /proc/net/ipv6_route.
    [[nodiscard]] static QList<QByteArray> defaultRoutes(const QByteArray& four, const QByteArray& six);

private:
    void newsArrived();
    void compare();

    MainQueue& m_queue;
    Descriptor m_socket;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::unique_ptr<Timer> m_gathering;
    QByteArray m_last;
    ObserverList<> m_observers;
};

} // namespace zofra
