// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/file_manage_stub.h"

#include "bridge/connection_record.h"

namespace nqp2::bridge {

CNQFileManageX64Stub::CNQFileManageX64Stub(void* systemObject, const ChannelPort& connection)
    : m_services(systemObject),
      // Sizes and time-outs of 0 stand for those of the connection.
      m_notifications(connection.table, OpenBeside(connection, kConnectId, 0, 0, 0, 0)) {}

} // namespace nqp2::bridge
