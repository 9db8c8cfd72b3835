// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/audio/OpenStream.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

namespace zofra {

/// The streams that engines have open, under numbers that are never used again. An engine may cancel a stream
/// on one thread just after it has closed it on another: a number that is gone means nothing then, while an
/// address would be that of freed memory. Any thread.
class OpenStreams final {
public:
    /// Those of the whole program; they outlive every thread.
    [[nodiscard]] static OpenStreams& all();

    /// The number as an engine keeps it. Never null.
    [[nodiscard]] void* add(std::shared_ptr<OpenStream> stream);
    /// Null once it is closed. Who holds it keeps it, closed or not.
    [[nodiscard]] std::shared_ptr<OpenStream> find(void* number) const;
    void remove(void* number);

private:
    mutable std::mutex m_mutex;
    std::map<void*, std::shared_ptr<OpenStream>> m_streams;
    std::uintptr_t m_last = 0;
};

} // namespace zofra
