// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/ApplicationBus.h"

namespace zofra {

/// What this process was started with, taken out of the environment so that no child passes it for its own.
/// To be called before the toolkit starts, which takes a part of it away.
[[nodiscard]] Activation takeActivation();

/// Tells an X11 desktop that what it has started is up, though no window was shown: else its busy pointer
/// would turn for many seconds. Waits for the X server, for a millisecond or so; an empty id is none.
void endStartup(const QString& startupId);

} // namespace zofra
