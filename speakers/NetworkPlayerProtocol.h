// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Turns what network players send into records, and groups those: pure functions, callable from any thread.
/// Bad or hostile input gives nothing.
#include "speakers/PlayerDescription.h"
#include "speakers/PlayerXMLParser.h"
#include "speakers/SpeakerGrouping.h"
#include "speakers/SsdpAnswer.h"
#include "speakers/ZoneGroupTopology.h"
