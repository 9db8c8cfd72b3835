// SPDX-License-Identifier: GPL-3.0-or-later
// What the sources that speak on a bus read beside the core's headers.
#pragma once

#include "cmake/headers/core.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QTimer>
