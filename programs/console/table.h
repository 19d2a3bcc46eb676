// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <string>
#include <vector>

namespace nqp2::tool {

class Console;

enum class Align { Left, Right };

struct Column {
    std::string title;
    Align align = Align::Left;
    /// Columns that it keeps while others can go; 0: it is never made narrower.
    int narrowest = 0;
    /// When a terminal is too narrow for all, the column of the highest number goes first;
    /// 0: never.
    int goesAt = 0;
};

/// Cells, at most one for each column; they are made printable.
using Row = std::vector<std::string>;
using TakeRow = std::function<void(const Row& row)>;
using GiveRows = std::function<void(const TakeRow& take)>;

/// Prints rows of text in columns that are as wide as their widest cell: the titles (unless all are
/// empty) and the rows; nothing when there are no rows. On a terminal the widest columns are made
/// narrower until a row fits; where that is not enough some go, and what still does not fit is cut.
/// Throws Failure when standard output cannot be written.
/// `giveRows` is called twice, for the widths and for the lines, and gives the same rows each time,
/// so that none is kept.
void PrintTable(Console& console, const std::vector<Column>& columns, const GiveRows& giveRows);
/// The same of rows without titles, each a name and what it stands for.
void PrintPairs(Console& console, const GiveRows& giveRows);

} // namespace nqp2::tool
