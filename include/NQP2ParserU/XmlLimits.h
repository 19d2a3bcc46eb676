// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/Export.h"

#include <cstdint>

namespace nqp2 {

/// Size in bytes beyond which an XML file is refused unread; 32 MiB at the start. A document may
/// take four times as much memory, and about seven times its own size, which one of very many small
/// elements exceeds. Process-wide, safe from any thread.
NQP2_API void SetMaxXmlFileSize(std::uint64_t bytes) noexcept;
/// The size that is in force, in bytes.
NQP2_API std::uint64_t MaxXmlFileSize() noexcept;

} // namespace nqp2
