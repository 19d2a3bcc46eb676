// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace nqp2::tool {

class Console;

enum class Align { Left, Right };

struct Column {
    std::string title;
    Align align = Align::Left;
    /// Columns that it keeps when the terminal is narrow; 0: it is never made narrower.
    int narrowest = 0;
};

/// Rows of text in columns that are as wide as their widest cell. On a terminal the widest columns
/// are made narrower until a row fits, and what still does not fit is cut.
class Table {
public:
    explicit Table(std::vector<Column> columns);

    /// One cell per column; the cells are made printable.
    void AddRow(const std::vector<std::string>& cells);
    /// Prints the titles (unless all are empty) and the rows; nothing when there are no rows.
    void Print(Console& console) const;

private:
    [[nodiscard]] std::vector<int> ColumnWidths(std::optional<int> room) const;
    [[nodiscard]] std::string Line(const std::vector<std::string>& cells,
                                   const std::vector<int>& widths, bool cut) const;
    [[nodiscard]] std::vector<std::string> Titles() const;

    std::vector<Column> m_columns;
    std::vector<std::vector<std::string>> m_rows;
};

} // namespace nqp2::tool
