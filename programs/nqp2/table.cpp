// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/table.h"

#include "nqp2/console.h"
#include "nqp2/display_text.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

namespace nqp2::tool {
namespace {

constexpr int kGap = 2;
constexpr int kWidestPadding = 64; ///< columns, where nothing is cut

int RowWidth(const std::vector<int>& widths) {
    const int gaps = kGap * (static_cast<int>(widths.size()) - 1);
    return std::accumulate(widths.begin(), widths.end(), gaps);
}

/// Index of the widest column that may still become narrower; the number of columns if none may.
std::size_t WidestYielding(const std::vector<Column>& columns, const std::vector<int>& widths) {
    std::size_t widest = columns.size();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const bool yields = columns[i].narrowest > 0 && widths[i] > columns[i].narrowest;
        if (yields && (widest == columns.size() || widths[i] > widths[widest])) {
            widest = i;
        }
    }
    return widest;
}

std::string Padded(const std::string& text, int width, Align align) {
    const std::string padding(static_cast<std::size_t>(std::max(0, width - DisplayWidth(text))),
                              ' ');
    return align == Align::Left ? text + padding : padding + text;
}

} // namespace

Table::Table(std::vector<Column> columns) : m_columns(std::move(columns)) {}

void Table::AddRow(const std::vector<std::string>& cells) {
    std::vector<std::string> row(m_columns.size());
    std::transform(cells.begin(), cells.end(), row.begin(),
                   [](const std::string& cell) { return Printable(cell, LineBreaks::Escape); });
    m_rows.push_back(std::move(row));
}

void Table::Print(Console& console) const {
    if (m_rows.empty()) {
        return;
    }
    const std::optional<int> room = console.OutputWidth();
    const std::vector<int> widths = ColumnWidths(room);
    const auto print = [&](const std::vector<std::string>& cells) {
        const std::string line = Line(cells, widths, room.has_value());
        console.Write((room ? CutToWidth(line, *room) : line) + '\n');
    };
    const std::vector<std::string> titles = Titles();
    if (std::any_of(titles.begin(), titles.end(),
                    [](const auto& title) { return !title.empty(); })) {
        print(titles);
    }
    std::for_each(m_rows.begin(), m_rows.end(), print);
}

std::vector<int> Table::ColumnWidths(std::optional<int> room) const {
    std::vector<int> widths;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        int width = DisplayWidth(m_columns[i].title);
        for (const auto& row : m_rows) {
            width = std::max(width, DisplayWidth(row[i]));
        }
        widths.push_back(width);
    }
    if (!room) {
        // Nothing is cut here; but one endless name must not blow every line up.
        std::for_each(widths.begin(), widths.end(),
                      [](int& width) { width = std::min(width, kWidestPadding); });
    }
    while (room && RowWidth(widths) > *room) {
        const std::size_t widest = WidestYielding(m_columns, widths);
        if (widest == m_columns.size()) {
            break;
        }
        --widths[widest];
    }
    return widths;
}

std::string Table::Line(const std::vector<std::string>& cells, const std::vector<int>& widths,
                        bool cut) const {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        line.append(i == 0 ? 0 : kGap, ' ');
        const std::string cell = cut ? CutToWidth(cells[i], std::max(1, widths[i])) : cells[i];
        line += Padded(cell, widths[i], m_columns[i].align);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

std::vector<std::string> Table::Titles() const {
    std::vector<std::string> titles;
    for (const Column& column : m_columns) {
        titles.push_back(column.title);
    }
    return titles;
}

} // namespace nqp2::tool
