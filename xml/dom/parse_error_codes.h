// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <libxml/xmlerror.h>

#include <cstdint>

namespace nqp2::dom {

/// The platform's code for a fault that libxml2 reported.
std::uint32_t PlatformErrorCode(const xmlError& error);

} // namespace nqp2::dom
