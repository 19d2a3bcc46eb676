// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/value_sink.h"

#include <cstdint>
#include <string_view>

namespace nqp2::tool {

/// Counts up when a member goes or changes its meaning; docs/json says what is promised.
inline constexpr std::int64_t kJsonVersion = 1;

/// Says in a document which it is.
inline void PutForm(ValueSink& sink, std::string_view format) {
    sink.Name("format");
    sink.Put(format);
    sink.Name("version");
    sink.Put(kJsonVersion);
}

} // namespace nqp2::tool
