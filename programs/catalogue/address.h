// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace nqp2::catalogue {

/// Where a catalogue is.
struct Address {
    bool isServer = false;
    std::string target; ///< path of a file, or URL of a server as the client library takes it
    std::string name;   ///< for messages: nothing of the URL's parameters
};

/// Takes what the user gave for --db; empty means the file in the user's data folder. Throws
/// tool::Failure, which tells nothing of the text, when that holds a password or is no address.
Address AddressOf(const std::string& given);

} // namespace nqp2::catalogue
