// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace zofra {

/// Whether a URL's host lies on this computer or in the home: a loopback, link-local or private address,
/// "localhost", or a name that only a home network knows (without a point, or below "local", "lan", "home" or
/// "internal"). Nothing is looked up.
[[nodiscard]] bool isLocalHost(const QString& host);

} // namespace zofra
