// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/EndpointsLayers.h"

#include "platform/linux/XdgFolders.h"

#include <algorithm>

namespace zofra {

QStringList endpointsFiles() {
    auto folders = xdg::configDirs();
    std::reverse(folders.begin(), folders.end());
    folders += xdg::configHome();
    QStringList files;
    for (const auto& folder : folders)
        files += folder + QStringLiteral("/zofrazofra/endpoints.ini");
    return files;
}

std::variant<ServiceHosts, QString> loadServiceHosts(const std::optional<QString>& commandLineFile) {
    ServiceHosts hosts;
    for (const auto& file : endpointsFiles()) {
        if (const auto refusal = hosts.overlay(file, ServiceHosts::MissingFile::isFine))
            return *refusal;
    }
    if (commandLineFile) {
        if (const auto refusal = hosts.overlay(*commandLineFile, ServiceHosts::MissingFile::isRefused))
            return *refusal;
    }
    return hosts;
}

} // namespace zofra
