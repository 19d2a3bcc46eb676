// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>

namespace nqp2::platform {

/// The number of this process, in a child that it forked the child's own. Asks the system once.
std::int32_t ProcessNumber();

/// Lets this process have that many files open, or as many as its user may allow it; returns how
/// many that are.
std::size_t AllowOpenFiles(std::size_t wanted);

/// Remembers the process that made it. What several processes of one fork hold, its maker ends:
/// the others have none of its threads, and share its sockets.
class Owner {
public:
    [[nodiscard]] bool IsThisProcess() const { return m_number == ProcessNumber(); }

private:
    std::int32_t m_number = ProcessNumber();
};

} // namespace nqp2::platform
