// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/Finding.h"
#include "app/doctor/HostTargets.h"
#include "platform/linux/net/HostProbe.h"

namespace zofra::doctor {

/// What one host came to: the first request to it that failed, else the slowest one.
[[nodiscard]] Finding judgeHost(const HostTarget& target, const std::vector<HostProbe>& probes,
                                AppLanguage language = AppLanguage::en);

/// What opening the live socket itself came to.
struct LiveSocketOutcome {
    bool isOpen = false;
    /// Why not, on one line; empty when nothing came in time.
    QString reason;
};
[[nodiscard]] Finding judgeLiveSocket(const HostTarget& target, const HostProbe& probe,
                                      const LiveSocketOutcome& outcome,
                                      AppLanguage language = AppLanguage::en);

} // namespace zofra::doctor
