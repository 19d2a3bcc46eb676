// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bench/two_processes.h"

#include <sys/types.h>

namespace nqp2::bench {

/// A worker process that only reads what it is sent and answers with success. New parsers of this
/// process talk to it as long as it lives.
class ReadingWorker {
public:
    ReadingWorker();
    ~ReadingWorker();
    ReadingWorker(const ReadingWorker&) = delete;
    ReadingWorker& operator=(const ReadingWorker&) = delete;

private:
    ScratchFolder m_folder;
    pid_t m_process = 0;
};

} // namespace nqp2::bench
