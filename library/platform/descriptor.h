// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace nqp2::platform {

/// Owns an open file of the system.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Descriptor() { static_cast<void>(Close()); }

    explicit operator bool() const { return m_number >= 0; }
    [[nodiscard]] int Get() const { return m_number; }

    /// Hands the file over to the caller.
    [[nodiscard]] int Release() { return std::exchange(m_number, -1); }

    /// Closes the file; 0 or the error number (a network mount reports late write errors here).
    int Close() {
        const int number = std::exchange(m_number, -1);
        return number >= 0 && close(number) != 0 ? errno : 0;
    }

private:
    int m_number = -1;
};

} // namespace nqp2::platform
