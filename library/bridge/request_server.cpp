// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/request_server.h"

#include "bridge/message_ids.h"
#include "platform/guard.h"

namespace nqp2::bridge {

std::unique_ptr<RequestServer>
StartRequestServer(void* systemObject, const SysInterfaceTable* table, ChannelHandle parent) {
    return platform::Guarded(std::unique_ptr<RequestServer>(), [&] {
        auto server =
            std::make_unique<RequestServer>(kRequestServerId, systemObject, table, parent);
        server->Start();
        return server;
    });
}

} // namespace nqp2::bridge
