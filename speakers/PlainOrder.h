// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSet>
#include <QStringList>
#include <QStringView>
#include <QUrl>

namespace zofra {

/// Whether `a` stands before `b` in plain character order: by code point, case-sensitive, no locale.
[[nodiscard]] bool plainlyBefore(QStringView a, QStringView b);

/// The absolute texts of these addresses in that order.
[[nodiscard]] QStringList sortedAddresses(const QSet<QUrl>& addresses);

} // namespace zofra
