// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Options.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/SessionBus.h"

namespace zofra {

/// `--doctor`: looks at everything that the program needs, at most for about fifteen seconds, prints what it
/// found and returns the exit status. What it uses is never destroyed: parts of it may still wait for an
/// answer when it is over. Main thread, with an application object and no running event loop.
[[nodiscard]] int runDoctor(const Options& options, const QString& version, QtMainQueue& mainQueue,
                            SessionBus& sessionBus);

} // namespace zofra
