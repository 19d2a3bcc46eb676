// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Export.h"

#include <cstdint>

namespace nqp2 {

/// Size in bytes beyond which an XML file is refused unread; 32 MiB at the start. A document
/// may take as much memory, which a small file of very many elements exceeds too. Process-wide, safe
/// from any thread.
NQP2_API void SetMaxXmlFileSize(std::uint64_t bytes) noexcept;
NQP2_API std::uint64_t MaxXmlFileSize() noexcept;

} // namespace nqp2
