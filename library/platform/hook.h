// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <utility>

namespace nqp2::platform {

/// A function that the host may set at any time and from any thread. Callers take a copy and call
/// it unlocked, so that it may call back into the library or replace itself.
template <class Signature>
class Hook {
public:
    using Function = std::function<Signature>;

    /// Returns the function that was set before.
    Function Exchange(Function function) {
        const std::lock_guard lock(m_mutex);
        m_isSet.store(function != nullptr, std::memory_order_release);
        return std::exchange(m_function, std::move(function));
    }

    /// The function in use; empty, without locking, when none is set.
    [[nodiscard]] Function Get() {
        if (!m_isSet.load(std::memory_order_acquire)) {
            return {};
        }
        const std::lock_guard lock(m_mutex);
        return m_function;
    }

private:
    std::atomic<bool> m_isSet = false;
    std::mutex m_mutex;
    Function m_function;
};

} // namespace nqp2::platform
