// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

class QSslSocket;

namespace zofra {

/// The last moments of a connection whose owner has let go of it: what was written goes out, what still comes
/// in is thrown away, and after two seconds at the latest it is cut.
class ClosingConnection {
public:
    /// `waitsForPeer`: whether anything was said that the peer should hear; otherwise it is cut at once. Main
    /// thread.
    static void takeOver(std::unique_ptr<QSslSocket> transport, bool waitsForPeer);
};

} // namespace zofra
