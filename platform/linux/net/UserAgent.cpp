// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/UserAgent.h"

namespace zofra {

QByteArray userAgent() {
    return QByteArrayLiteral("ZofraZofra/" ZOFRA_VERSION);
}

} // namespace zofra
