// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/table.h"

#include "console/console.h"
#include "console/display_text.h"
#include "console/output_text.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <numeric>
#include <optional>

namespace nqp2::tool {
namespace {

constexpr int kGap = 2;
constexpr int kLeast = 8;          ///< columns of what is cut when all else is gone
constexpr int kWidestPadding = 64; ///< columns, where nothing is cut

/// The width of a column that is not shown.
constexpr int kGone = -kGap;

int RowWidth(const std::vector<int>& widths) {
    const int gaps = kGap * (static_cast<int>(widths.size()) - 1);
    return std::accumulate(widths.begin(), widths.end(), gaps);
}

/// Makes the widest of the columns that yield narrower, none below `narrowest` of it, until a row
/// fits.
template <class Narrowest>
void Shrink(const std::vector<Column>& columns, int room, std::vector<int>& widths,
            Narrowest narrowest) {
    while (RowWidth(widths) > room) {
        std::size_t widest = columns.size();
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const bool yields = columns[i].narrowest > 0 && widths[i] > narrowest(columns[i]);
            if (yields && (widest == columns.size() || widths[i] > widths[widest])) {
                widest = i;
            }
        }
        if (widest == columns.size()) {
            return;
        }
        --widths[widest];
    }
}

/// Lets columns go, those of least worth first, until a row fits.
void Drop(const std::vector<Column>& columns, int room, std::vector<int>& widths) {
    while (RowWidth(widths) > room) {
        std::size_t least = columns.size();
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (widths[i] != kGone && columns[i].goesAt > 0 &&
                (least == columns.size() || columns[i].goesAt > columns[least].goesAt)) {
                least = i;
            }
        }
        if (least == columns.size()) {
            return;
        }
        widths[least] = kGone;
    }
}

/// As wide as the titles and the widest cells; nothing when there are no rows.
std::vector<int> WidestCells(const std::vector<Column>& columns, const GiveRows& giveRows) {
    std::vector<int> widths;
    std::transform(columns.begin(), columns.end(), std::back_inserter(widths),
                   [](const Column& column) { return DisplayWidth(column.title); });
    bool hasRows = false;
    giveRows([&](const Row& row) {
        hasRows = true;
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], DisplayWidth(Printable(row[i], LineBreaks::Escape)));
        }
    });
    return hasRows ? widths : std::vector<int>();
}

void FitWidths(const std::vector<Column>& columns, std::optional<int> room,
               std::vector<int>& widths) {
    if (!room) {
        // Nothing is cut here; but one endless name must not blow every line up.
        std::for_each(widths.begin(), widths.end(),
                      [](int& width) { width = std::min(width, kWidestPadding); });
        return;
    }
    Shrink(columns, *room, widths, [](const Column& column) { return column.narrowest; });
    Drop(columns, *room, widths);
    Shrink(columns, *room, widths, [](const Column&) { return kLeast; });
}

/// Appends a cell to a line.
void Pad(std::string& line, const std::string& text, int width, Align align) {
    const auto padding = static_cast<std::size_t>(std::max(0, width - DisplayWidth(text)));
    line.append(align == Align::Right ? padding : 0, ' ');
    line += text;
    line.append(align == Align::Left ? padding : 0, ' ');
}

/// Writes the lines of a table whose widths are settled.
class LinePrinter {
public:
    LinePrinter(Console& console, const std::vector<Column>& columns,
                const std::vector<int>& widths, std::optional<int> room)
        : m_out(&console), m_columns(columns), m_widths(widths), m_room(room) {}

    void Print(const Row& row) {
        std::string line;
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            if (m_widths[i] == kGone) {
                continue;
            }
            line.append(i == 0 ? 0 : kGap, ' ');
            const std::string cell =
                i < row.size() ? Printable(row[i], LineBreaks::Escape) : std::string();
            Pad(line, m_room ? CutToWidth(cell, std::max(1, m_widths[i])) : cell, m_widths[i],
                m_columns[i].align);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        m_out.Put(m_room ? CutToWidth(line, *m_room) : line, '\n');
    }
    void Finish() { m_out.Flush(); }

private:
    OutputText m_out;
    const std::vector<Column>& m_columns;
    const std::vector<int>& m_widths;
    std::optional<int> m_room;
};

Row Titles(const std::vector<Column>& columns) {
    Row titles;
    std::transform(columns.begin(), columns.end(), std::back_inserter(titles),
                   [](const Column& column) { return column.title; });
    return titles;
}

} // namespace

void PrintTable(Console& console, const std::vector<Column>& columns, const GiveRows& giveRows) {
    std::vector<int> widths = WidestCells(columns, giveRows);
    if (widths.empty()) {
        return;
    }
    const std::optional<int> room = console.OutputWidth();
    FitWidths(columns, room, widths);
    LinePrinter lines(console, columns, widths, room);
    const Row titles = Titles(columns);
    if (std::any_of(titles.begin(), titles.end(),
                    [](const std::string& title) { return !title.empty(); })) {
        lines.Print(titles);
    }
    giveRows([&](const Row& row) { lines.Print(row); });
    lines.Finish();
}

void PrintPairs(Console& console, const GiveRows& giveRows) {
    PrintTable(console, {{"", Align::Left, 0}, {"", Align::Left, 8}}, giveRows);
}

} // namespace nqp2::tool
