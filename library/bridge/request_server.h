// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/file_manage_stub.h"
#include "bridge/ipc_server_worker.h"

#include <memory>

namespace nqp2::bridge {

/// The server that answers the worker's own requests.
using RequestServer = CKVIPCServerWorker<CNQFileManageX64Stub>;

/// A running server beside `parent` (0: on a channel of its own); null when memory or threads give
/// out.
std::unique_ptr<RequestServer>
StartRequestServer(void* systemObject, const SysInterfaceTable* table, ChannelHandle parent);

} // namespace nqp2::bridge
