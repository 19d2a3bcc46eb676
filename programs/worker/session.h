// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/SysInterface.h"
#include "worker/channel_line.h"
#include "worker/operations.h"
#include "worker/progress_link.h"

namespace nqp2::worker {

/// One parser of a library process: its requests and its progress. It takes the channel of the
/// parser's request server too, and drops what comes there: it needs nothing of the host.
class Session {
public:
    Session(const SysInterfaceTable& table, ChannelHandle requests)
        : m_requests(table, requests), m_callbacks(table), m_server(table),
          m_operations(m_progress) {}
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Serves until the library closes the channel or is gone. What is unfinished then is dropped;
    /// a recording that runs is completed when this object goes. Throws when there is no thread for
    /// it.
    void Serve();
    /// Lets Serve end soon. From any thread.
    void Stop();

private:
    void ServeRequests();
    /// Takes the callback channel and what comes there.
    void ServeCallbacks();
    void EndCallbacks();

    ChannelLine m_requests;
    ChannelLine m_callbacks;
    ChannelLine m_server;
    ProgressLink m_progress;
    Operations m_operations;
};

} // namespace nqp2::worker
