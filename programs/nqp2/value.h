// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace nqp2::tool {

class Console;

struct NamedValue;
struct Value;

using List = std::vector<Value>;
/// Members in the order in which they are shown.
using Record = std::vector<NamedValue>;

/// A list whose elements are made when they are printed, so that what has many is not held twice.
/// The source of the elements must outlive it.
struct Sequence {
    std::size_t count = 0;
    std::function<Value(std::size_t)> at;
};

/// The elements of an array, each converted.
template <class Items, class Convert>
Sequence SequenceOf(const Items& items, Convert convert) {
    return {static_cast<std::size_t>(items.GetSize()), [&items, convert](std::size_t index) {
                return Value(convert(items[static_cast<std::int64_t>(index)]));
            }};
}

/// What a command has to tell, independent of whether it comes out as table, CSV or JSON.
struct Value {
    using Data = std::variant<std::int64_t, std::uint64_t, double, bool, std::string, List, Record,
                              Sequence>;

    template <std::integral T>
    Value(T number);          // NOLINT(google-explicit-constructor)
    Value(double number);     // NOLINT(google-explicit-constructor)
    Value(std::string text);  // NOLINT(google-explicit-constructor)
    Value(List list);         // NOLINT(google-explicit-constructor)
    Value(Record record);     // NOLINT(google-explicit-constructor)
    Value(Sequence sequence); // NOLINT(google-explicit-constructor)

    Data data;
};

struct NamedValue {
    std::string name;
    Value value;
};

/// An integer in the widest type of its kind.
template <std::integral T>
auto Widened(T number) {
    if constexpr (std::same_as<T, bool>) {
        return number;
    } else if constexpr (std::signed_integral<T>) {
        return std::int64_t{number};
    } else {
        return std::uint64_t{number};
    }
}

template <std::integral T>
Value::Value(T number) : data(Widened(number)) {}
inline Value::Value(double number) : data(number) {}
inline Value::Value(std::string text) : data(std::move(text)) {}
inline Value::Value(List list) : data(std::move(list)) {}
inline Value::Value(Record record) : data(std::move(record)) {}
inline Value::Value(Sequence sequence) : data(std::move(sequence)) {}

/// Prints a document as JSON in UTF-8: each member of the record on a line of its own, and each
/// element of a member that is a list of records. Bytes that are no UTF-8 become U+FFFD; control
/// characters are escaped.
void PrintJson(Console& console, const Record& document);

/// The same form on one line.
std::string JsonText(const Value& value);

} // namespace nqp2::tool
