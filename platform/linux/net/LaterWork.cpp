// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/LaterWork.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

namespace zofra {

namespace {

class WorkEvent final : public QEvent {
public:
    explicit WorkEvent(std::function<void()> work)
        : QEvent(QEvent::User)
        , m_work(std::move(work)) {}
    void run() const { m_work(); }

private:
    const std::function<void()> m_work;
};

} // namespace

void LaterWork::post(std::function<void()> work) {
    QCoreApplication::postEvent(this, new WorkEvent(std::move(work)));
}

bool LaterWork::event(QEvent* event) {
    if (event->type() != QEvent::User)
        return QObject::event(event);
    // The event belongs to the loop: it stays when this object does not.
    static_cast<const WorkEvent*>(event)->run();
    return true;
}

} // namespace zofra
