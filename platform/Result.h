// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <tl/expected.hpp>
#include <utility>

namespace zofra {

/// What may fail: its value, or why there is none, as `std::expected` has it. The error of most is one line
/// of text for a person or the log; only where a caller must tell errors apart has it a type of its own.
template<typename Value, typename Error = QString>
using Result = tl::expected<Value, Error>;

/// The result of what failed for `reason`: `return failure(reason);`.
template<typename Error = QString>
[[nodiscard]] tl::unexpected<Error> failure(Error reason) {
    return tl::unexpected<Error>(std::move(reason));
}

} // namespace zofra
