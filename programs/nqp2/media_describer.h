// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/worker_session.h"
#include "NQP2ParserU/ClipMetadataRecords.h"
#include "NQP2ParserU/CString.h"

#include <optional>
#include <string>

namespace nqp2::tool {

class Console;

/// Lets the worker describe camera files. It starts with the first of them and again after a file
/// at which it ended. Without one nothing is described, which is told once.
class MediaDescriber {
public:
    MediaDescriber(Console& console, std::string worker);

    /// Nothing found out when `metadata` comes back empty: `problem` says why, "" without a worker.
    bool Describe(const CString& path, ClipMetadata& metadata, std::string& problem);

private:
    bool HasWorker();

    Console& m_console;
    std::string m_program;
    std::optional<WorkerSession> m_session;
    int m_startsLeft = 4;
};

} // namespace nqp2::tool
