// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <libxml/xmlerror.h>

#include <cstdint>
#include <string_view>

namespace nqp2::dom {

/// The platform's code for a fault that libxml2 reported. `ahead`: the input from where the parser
/// stands, as far as it is read; the platform tells some faults apart by it.
std::uint32_t PlatformErrorCode(const xmlError& error, std::string_view ahead);

} // namespace nqp2::dom
