// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/connection.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace nqp2::catalogue {

/// A column of a table and the member of a record that it holds. The tables of columns are all
/// that statements are made of: no text of a card ever stands in one.
template <class Record>
struct Column {
    const char* name;
    std::variant<std::string Record::*, std::int64_t Record::*> member;
};

/// "a.name, a.title" with "a." before each.
template <class Columns>
std::string NamesOf(const Columns& columns, std::string_view before = {}) {
    std::string names;
    for (const auto& column : columns) {
        names.append(names.empty() ? "" : ", ").append(before).append(column.name);
    }
    return names;
}

/// Rows of a table. `owner` is a column of numbers before those of the record; empty for none.
template <class Columns>
Insertion InsertionInto(std::string_view table, std::string_view owner, const Columns& columns,
                        std::string end = {}) {
    Insertion into{std::string(table), {}, std::move(end)};
    if (!owner.empty()) {
        into.columns.push_back({std::string(owner), true});
    }
    for (const auto& column : columns) {
        into.columns.push_back({column.name, column.member.index() == 1});
    }
    return into;
}

/// What follows an INSERT so that a row that is there already takes the new values.
template <class Columns>
std::string OrUpdate(std::string_view key, const Columns& columns) {
    std::string text = std::string(" ON CONFLICT (").append(key).append(") DO UPDATE SET ");
    bool isFirst = true;
    for (const auto& column : columns) {
        text.append(isFirst ? "" : ", ").append(column.name).append(" = excluded.");
        text.append(column.name);
        isFirst = false;
    }
    return text;
}

/// "UPDATE table SET a = $2, ... WHERE id = $1".
template <class Columns>
std::string UpdateById(std::string_view table, const Columns& columns) {
    std::string text = std::string("UPDATE ").append(table).append(" SET ");
    std::size_t number = 1;
    for (const auto& column : columns) {
        text.append(number == 1 ? "" : ", ").append(column.name).append(" = $");
        text.append(std::to_string(++number));
    }
    return text + " WHERE id = $1";
}

/// Adds the record's values to the parameters, in the order of the columns.
template <class Columns, class Record>
void AddValues(Parameters& parameters, const Columns& columns, const Record& record) {
    for (const auto& column : columns) {
        std::visit([&](auto member) { parameters.emplace_back(record.*member); }, column.member);
    }
}

inline void TakeColumn(std::string& member, const Row& row, int column) {
    member = row.Text(column);
}
inline void TakeColumn(std::int64_t& member, const Row& row, int column) {
    member = row.Number(column);
}

/// Fills the record from the columns of a row, from `first` on.
template <class Columns, class Record>
void ReadValues(const Row& row, int first, const Columns& columns, Record& record) {
    for (const auto& column : columns) {
        std::visit([&](auto member) { TakeColumn(record.*member, row, first); }, column.member);
        ++first;
    }
}

} // namespace nqp2::catalogue
