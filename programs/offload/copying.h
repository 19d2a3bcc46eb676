// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/digest.h"
#include "offload/outcome.h"
#include "offload/plan.h"

#include <chrono>
#include <vector>

namespace nqp2::tool {
class RunProgress;
}

namespace nqp2::offload {

using Clock = std::chrono::steady_clock;
double SecondsSince(Clock::time_point begin);

/// What the first reading knows of each file of the card, by its number in the tree.
class ReadDigests {
public:
    explicit ReadDigests(std::size_t nodes) : m_digests(nodes), m_isRead(nodes) {}

    void Set(std::size_t node, const copy::Digest::Bytes& digest) {
        m_digests[node] = digest;
        m_isRead[node] = true;
    }
    [[nodiscard]] bool IsRead(std::size_t node) const { return m_isRead[node]; }
    [[nodiscard]] const copy::Digest::Bytes& Of(std::size_t node) const { return m_digests[node]; }

private:
    std::vector<copy::Digest::Bytes> m_digests;
    std::vector<bool> m_isRead;
};

/// Copies the card to all targets: media first, then metadata, then the folders' times. Targets of
/// `outcome` that have ended already get nothing. Hashes go into the plan's tree. Ctrl-C ends it,
/// as `outcome` then tells; nothing half-written has a real name.
void CopyCard(Plan& plan, tool::RunProgress& progress, ReadDigests& digests, Outcome& outcome);

/// Reads the card a second time, around the cache, and compares.
void ReadCardAgain(Plan& plan, tool::RunProgress& progress, const ReadDigests& digests,
                   Outcome& outcome);

} // namespace nqp2::offload
