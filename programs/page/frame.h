// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "page/html.h"

#include <set>
#include <span>
#include <string>
#include <string_view>

/// What is around the contents of every page.
namespace nqp2::page {

/// All before the body. The page says of itself that it may load nothing.
void PutHead(Html& html, std::string_view title);

/// A state of clips that the reader may choose: the value of a row's data-state or data-taken.
struct Choice {
    Own value;
    Own text;
};
enum class Look { Rows, RowsOrPictures };

/// Fields for searching and filtering, shown by the script, which they are for. `starts` of clips,
/// as ISO 8601 or empty, give the days.
void PutTools(Html& html, const std::set<std::string>& starts, std::span<const Choice> states,
              Look look);

/// All behind the contents. `made` says when, for people.
void PutFoot(Html& html, std::string_view made);

} // namespace nqp2::page
