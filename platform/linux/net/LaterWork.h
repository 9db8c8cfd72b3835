// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <functional>

namespace zofra {

/// Does work in later turns of its thread's event loop, in the order posted; what it has not come to when it
/// ends is dropped. That thread only.
class LaterWork final : public QObject {
public:
    /// `work` may end this object.
    void post(std::function<void()> work);

protected:
    bool event(QEvent* event) override;
};

} // namespace zofra
