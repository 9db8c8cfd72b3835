// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/LocalNetwork.h"

#include <QString>

#include <memory>
#include <vector>

namespace zofra {

/// The machine's own interfaces and UDP sockets.
class LinuxLocalNetwork final : public LocalNetwork {
public:
    [[nodiscard]] std::vector<InterfaceAddress> interfaceAddresses() const override;
    [[nodiscard]] std::unique_ptr<UdpSearchSocket> openSearchSocket(const QString& ip) override;
};

} // namespace zofra
