// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSet>
#include <QString>
#include <QStringList>
#include <QUrl>

namespace zofra {

/// The texts in double quotes between square brackets, as logs show a list; quotes, backslashes and control
/// characters inside are escaped, so that what a peer sent stays within its quotes.
[[nodiscard]] QString quotedList(const QStringList& texts);

/// The absolute texts of these addresses, ascending in plain character order.
[[nodiscard]] QStringList sortedAddresses(const QSet<QUrl>& addresses);

} // namespace zofra
