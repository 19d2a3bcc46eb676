// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/request_server.h"
#include "NQP2ParserU/SysInterface.h"

/// The one place of process-wide state: what the host has set.
namespace nqp2::bridge {

/// Written by the host's two calls alone, never locked.
struct InstalledInterface {
    void* systemObject = nullptr;
    const SysInterfaceTable* table = nullptr;
    RequestServer* server = nullptr; ///< owned; null when none runs
};

InstalledInterface& Installed();

} // namespace nqp2::bridge
