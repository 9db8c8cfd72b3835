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
    // Observers hear before a field changes. A turn later it has, and what others do about it has been
    // posted; a further turn later that is done as well.
    m_mainQueue.async(m_lifetime.guard([this] {
        m_mainQueue.async(m_lifetime.guard([this] {
            m_isPosted = false;
            m_observers.notify();
        }));
    }));
}

} // namespace zofra
