// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SpeakerBackground.h"

namespace zofra {

/// One complete search; what it finds goes to `background`, whose end ends it. For background threads.
void runDiscovery(const std::shared_ptr<SpeakerBackground>& background, bool forceSubnetScan);

} // namespace zofra
