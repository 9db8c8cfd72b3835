// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ChangeWatch.h"

namespace zofra {

ChangeWatch::ChangeWatch(MainQueue& mainQueue, const std::vector<Observable*>& watched)
    : m_mainQueue(mainQueue) {
    m_tokens.reserve(watched.size());
    for (Observable* one : watched)
        m_tokens.push_back(one->observe([this] { touch(); }));
}

void ChangeWatch::touch() {
    if (m_isPosted)
        return;
    m_isPosted = true;
    // Observers hear before a field changes; a turn later all of them have.
    m_mainQueue.async(m_lifetime.guard([this] {
        m_isPosted = false;
        m_observers.notify();
    }));
}

} // namespace zofra
