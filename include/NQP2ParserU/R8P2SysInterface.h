// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

/// @file
/// How a host hands over the way to the worker process, before it makes its first parser.

#include "NQP2ParserU/Export.h"

extern "C" {

/// Sets the host's system object and its channel functions (an nqp2::SysInterfaceTable), both kept
/// as pointers; parsers made from now on use them. When both are there, also starts the server
/// that answers the worker's requests. To be called once: a second call starts a second server,
/// and the first one is never stopped. No lock: no parser may be made meanwhile.
NQP2_API void R8P2Parser_SetSysInterface(void* systemObject, void* table) noexcept;

/// Stops the server that R8P2Parser_SetSysInterface started, and waits for its threads. System
/// object and table stay set. Does nothing when no server runs.
NQP2_API void R8XDCAMParser_ResetSysInterface() noexcept;
}
