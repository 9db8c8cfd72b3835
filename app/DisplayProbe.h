// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <memory>
#include <optional>

namespace zofra {

/// The display that was found to answer.
struct UsableDisplay {
    /// For $QT_QPA_PLATFORM.
    QString platform;
    /// A connection to it, to be kept until the toolkit has made its own: some servers start over when the
    /// last one ends, and let nobody in meanwhile.
    std::shared_ptr<void> connection;
};

/// The window system to use: what the user set in $QT_QPA_PLATFORM, else the one of this session that
/// answers; absent when none does. The toolkit itself would end the program without a display.
[[nodiscard]] std::optional<UsableDisplay> usableDisplay();

} // namespace zofra
