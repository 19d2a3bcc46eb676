// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/channel_port.h"
#include "bridge/file_services.h"

#include <cstdint>

namespace nqp2::bridge {

/// The library's end of the host's services for one connection.
class CNQFileManageX64Stub {
public:
    /// Opens the channel on which notifications would go to the worker, beside the connection's.
    CNQFileManageX64Stub(void* systemObject, const ChannelPort& connection);

    /// Answers one request; the length of the reply.
    std::int32_t Answer(std::uint32_t messageId, const ServiceCall& call) {
        return Serve(m_services, messageId, call);
    }

private:
    FileServices m_services;
    OwnedChannel m_notifications;
};

} // namespace nqp2::bridge
