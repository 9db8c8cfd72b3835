// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "stations/ServiceHosts.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <variant>

namespace zofra {

/// The files that may stand over the built-in hosts, weakest first: zofrazofra/endpoints.ini in the system's
/// configuration folders, then in the user's.
[[nodiscard]] QStringList endpointsFiles();

/// The hosts to use: built-in, then each of `endpointsFiles()` that exists, then `commandLineFile`, which
/// must exist. Or the one line that says which file is wrong and why.
[[nodiscard]] std::variant<ServiceHosts, QString>
loadServiceHosts(const std::optional<QString>& commandLineFile);

} // namespace zofra
