// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/list_head.h"

#include "platform/host_name.h"

#include <chrono>

namespace nqp2::offload {

mhl::ManifestHead NewHead(mhl::Process process) {
    mhl::ManifestHead head;
    head.created = std::chrono::duration_cast<std::chrono::seconds>(
                       std::chrono::system_clock::now().time_since_epoch())
                       .count();
    head.hostName = platform::HostName();
    head.tool = "nqp2";
    head.toolVersion = NQP2_TOOL_VERSION;
    head.process = process;
    return head;
}

} // namespace nqp2::offload
