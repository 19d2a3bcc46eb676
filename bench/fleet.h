// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <array>
#include <functional>
#include <sys/types.h>
#include <vector>

namespace nqp2::bench {

/// Processes that begin at the same moment.
class Fleet {
public:
    Fleet();
    ~Fleet();
    Fleet(const Fleet&) = delete;
    Fleet& operator=(const Fleet&) = delete;

    /// Starts a process, which does `work`; that waits for the others by what it is given.
    void Add(const std::function<void(const std::function<void()>& wait)>& work);
    /// Nanoseconds from the moment when all are ready to the end of the last. Throws when one has
    /// failed.
    double Run();

private:
    std::array<int, 2> m_ready = {};
    std::array<int, 2> m_start = {};
    std::vector<pid_t> m_children;
};

} // namespace nqp2::bench
