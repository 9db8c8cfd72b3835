// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace zofra {

/// Whether a URL's host lies on this computer or in the home: a loopback, link-local or private address, or a
/// name that only a home network knows. Nothing is looked up.
[[nodiscard]] bool isLocalHost(const QString& host);

} // namespace zofra
