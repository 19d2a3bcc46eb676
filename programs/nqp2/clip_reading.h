// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

namespace nqp2::tool {

/// What is read of clips beside their records.
struct ClipReading {
    bool metadata = false;
    bool files = false;
};

} // namespace nqp2::tool
