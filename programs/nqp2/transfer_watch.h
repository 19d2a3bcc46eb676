// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/progress_bar.h"

#include <cstdint>
#include <string>

class CNQP2Parser;

namespace nqp2::tool {

class Console;

/// Says that a clip was taken although it is not whole.
void TellIncomplete(Console& console, const std::string& label, const std::string& sentence);
/// Bits of the transfer record's value 2: to take clips that are not whole, and that one was not.
inline constexpr std::uint32_t kTakeIncomplete = 1;
inline constexpr std::uint32_t kWasIncomplete = 2;

/// Shows how a transfer goes and lets Ctrl-C cancel it. Outlives the parser that it watches, which
/// may still be calling when a transfer has ended.
class TransferWatch {
public:
    /// From here on Ctrl-C ends no more than the transfer.
    explicit TransferWatch(bool quiet);

    /// From here on the parser reports its transfers to this.
    void Follow(CNQP2Parser& parser);
    /// A transfer begins. Throws the failure to report after Ctrl-C.
    void Begin(const std::string& label);
    /// Where it has come, in KiB. False when it has to end.
    bool GoesOn(std::uint64_t done, std::uint64_t total);
    void End() { m_bar.End(); }

private:
    ProgressBar m_bar;
};

} // namespace nqp2::tool
