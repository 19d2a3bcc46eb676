// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/run_progress.h"
#include "nqp2/command.h"

#include <cstdint>
#include <mutex>
#include <string>

class CNQP2Parser;

namespace nqp2::tool {

/// Says that a clip was taken although it is not whole.
void TellIncomplete(RunProgress& progress, const std::string& label, const std::string& sentence);

/// Files and their bytes.
struct FileSum {
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;

    FileSum& operator+=(const FileSum& more) {
        files += more.files;
        bytes += more.bytes;
        return *this;
    }
};

/// Shows how a run of transfers goes, all of them together, and lets Ctrl-C, SIGTERM and SIGHUP
/// cancel it.
/// Outlives the parser that it watches, which may still be calling when a transfer has ended.
class TransferWatch {
public:
    /// From here on these signals end no more than the transfer.
    explicit TransferWatch(const ProgressOptions& options);

    /// From here on the parser reports its transfers to this.
    void Follow(CNQP2Parser& parser);
    /// The run begins: a word for it, and what is to be transferred.
    void BeginRun(const std::string& phase, const FileSum& all);
    /// A transfer of the run begins.
    void Begin(const std::string& label);
    /// Where it has come, in KiB. False when it has to end.
    bool GoesOn(std::uint64_t done, std::uint64_t total);
    /// The transfer is over, and that much is done with it.
    void End(const FileSum& done);
    void EndRun();

    /// What is told beside it.
    [[nodiscard]] RunProgress& Shown() { return m_progress; }
    /// What the transfers that are over have done.
    [[nodiscard]] FileSum Done() const { return m_done; }

private:
    const bool m_wasFormChosen;
    RunProgress m_progress;
    std::mutex m_mutex;
    bool m_isRunning = false;
    std::string m_label;
    FileSum m_done;
};

} // namespace nqp2::tool
