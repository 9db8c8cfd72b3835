// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <unistd.h>
#include <utility>

namespace zofra {

/// A file descriptor that is closed with its owner.
class Descriptor {
public:
    /// None, when it is negative.
    explicit Descriptor(int descriptor = -1)
        : m_descriptor(descriptor) {}
    Descriptor(Descriptor&& other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    ~Descriptor() {
        if (isOpen())
            ::close(m_descriptor);
    }
    [[nodiscard]] int get() const { return m_descriptor; }
    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }

private:
    int m_descriptor;
};

} // namespace zofra
