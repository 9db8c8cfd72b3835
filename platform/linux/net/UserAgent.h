// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

namespace zofra {

/// What this program calls itself before the servers of streams: its name and version.
[[nodiscard]] QByteArray userAgent();

} // namespace zofra
