// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

namespace nqp2::xml {

/// Base64 text (RFC 4648) with padding, in lines of 76 characters separated by CR LF. Ends with
/// one CR LF when the length is a positive multiple of 57: kept, hosts rely on it. "" for no bytes
/// and for lengths whose text would pass 2 GiB.
std::string EncodeBase64(const unsigned char* data, int length);

/// The bytes in a Base64 text up to its end or first zero. Whatever is not of the alphabet is
/// skipped, padding included; a lone last character gives nothing.
std::string DecodeBase64(std::string_view text);

} // namespace nqp2::xml
