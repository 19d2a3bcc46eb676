// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/Channel.h"
#include "platform/descriptor.h"

#include <string>

/// The socket file through which hosts find a worker.
namespace nqp2::channel {

/// "WHAT: the system's words for errno". Call it before errno can change.
WorkerStatus Failure(const std::string& what);

/// Connects to whoever listens there. Empty with errno when nobody does; waits at most five seconds
/// for a listener that is slow to accept.
platform::Descriptor ConnectTo(const std::string& path);

/// Listens there. The folder must be a real one of the user's own with no rights for others.
WorkerStatus ListenOn(const std::string& path, platform::Descriptor& listener);

/// Removes the file of a socket on which nobody listens any more.
void RemoveStaleSocket(const std::string& path);

} // namespace nqp2::channel
