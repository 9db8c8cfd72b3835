// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/FrameFilter.h"

#include <algorithm>

namespace zofra {

namespace {

/// By chance, every few thousand bytes of anything look like a header; three that lead to each other do not.
constexpr int framesInARow = 3;
/// So much more must come before the next search.
constexpr qsizetype searchStep = 256;

} // namespace

void FrameFilter::put(QByteArrayView bytes) {
    m_input.append(bytes);
    m_bytesWithoutSound += bytes.size();
    while (m_isInStep || findFrames()) {
        passFrames();
        if (m_isInStep) // The rest of a frame is still to come.
            return;
    }
}

qsizetype FrameFilter::take(char* buffer, qsizetype size) {
    const auto count = std::min(size, m_frames.size() - m_taken);
    std::copy_n(m_frames.constData() + m_taken, count, buffer);
    m_taken += count;
    if (isEmpty()) {
        m_frames.resize(0); // Keeps what is allocated.
        m_taken = 0;
    }
    return count;
}

FrameFilter::Chain FrameFilter::chainAt(qsizetype at) const {
    auto kind = m_kind;
    for (int i = 0; i < framesInARow; ++i) {
        if (at + FrameHeader::bytesNeeded > m_input.size())
            return Chain::unfinished;
        const auto header = FrameHeader::read(QByteArrayView(m_input).sliced(at));
        if (!header || (kind != 0 && header->kind != kind))
            return Chain::none;
        kind = header->kind;
        at += header->length;
    }
    return Chain::whole;
}

/// Drops what cannot be the beginning of frames. False when more must come.
bool FrameFilter::findFrames() {
    if (m_input.size() < m_searchFrom)
        return false;
    qsizetype firstUnfinished = m_input.size();
    for (qsizetype at = 0; at < m_input.size(); ++at) {
        const auto chain = chainAt(at);
        if (chain == Chain::whole) {
            m_input.remove(0, at);
            m_isInStep = true;
            return true;
        }
        if (chain == Chain::unfinished)
            firstUnfinished = std::min(firstUnfinished, at);
    }
    m_input.remove(0, firstUnfinished);
    m_searchFrom = m_input.size() + searchStep;
    return false;
}

/// Lets the whole frames at the beginning through. Out of step when none begins where one should.
void FrameFilter::passFrames() {
    qsizetype at = 0;
    while (at + FrameHeader::bytesNeeded <= m_input.size()) {
        const auto header = FrameHeader::read(QByteArrayView(m_input).sliced(at));
        m_isInStep = header && (m_kind == 0 || header->kind == m_kind);
        if (!m_isInStep || at + header->length > m_input.size())
            break;
        m_kind = header->kind;
        m_sound += header->duration;
        at += header->length;
    }
    m_searchFrom = 0;
    if (at == 0)
        return;
    m_frames.append(m_input.constData(), at);
    m_input.remove(0, at);
    m_bytesWithoutSound = m_input.size();
}

} // namespace zofra
