// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>

namespace nqp2::platform {

/// The number of this process, in a child that it forked the child's own. Asks the system once.
std::int32_t ProcessNumber();

/// Remembers the process that made it. What several processes of one fork hold, its maker ends:
/// the others have none of its threads, and share its sockets.
class Owner {
public:
    [[nodiscard]] bool IsThisProcess() const { return m_number == ProcessNumber(); }

private:
    std::int32_t m_number = ProcessNumber();
};

/// False when a file of that size would be beyond the process's limit; the system would not only
/// refuse it but end the process by a signal.
bool IsWithinFileSizeLimit(std::uint64_t size);

/// Sees to it that descriptors 0 to 2 are open, lest a file that is opened later take the place of
/// standard error.
void OpenStandardDescriptors();

} // namespace nqp2::platform
