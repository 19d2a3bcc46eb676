// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "page/html.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

/// What pages that show clips have in common.
namespace nqp2::page {

/// A column of a table of clips. One with a key can be sorted by that of its rows' data.
struct Column {
    Own title;
    Own key;
};
/// The heads of the table's columns; rows follow in the body of the table, whose name is `cls`.
void OpenClips(Html& html, Own cls, std::span<const Column> columns);
void CloseClips(Html& html);

/// A cell with day, time and zone of an ISO 8601 time, which may be empty.
void PutStart(Html& html, std::string_view start);

/// A line of a list of facts, and one of the details of a clip; nothing without a text.
void PutFact(Html& html, Own name, std::string_view text);
void PutDetail(Html& html, Own name, std::string_view text);

/// "3 clips", "1 clip".
std::string Counted(std::int64_t count, std::string_view what);

} // namespace nqp2::page
