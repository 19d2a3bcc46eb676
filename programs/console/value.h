// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/value_sink.h"

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

struct NamedValue;
struct Value;

using List = std::vector<Value>;
/// Members in the order in which they are shown.
using Record = std::vector<NamedValue>;

/// A value that is made when it is shown. What it is made of must outlive it.
using Content = std::function<void(ValueSink& sink)>;

/// A list of records that are made one at a time when they are shown, so that what has many is not
/// held twice. The source of the elements must outlive it.
struct Sequence {
    std::size_t count = 0;
    std::function<void(ValueSink& sink, std::size_t index)> put;
};

/// What a command has to tell, independent of whether it comes out as table, CSV or JSON.
struct Value {
    using Data = std::variant<std::int64_t, std::uint64_t, double, bool, std::string, List, Record,
                              Sequence, Content>;

    template <std::integral T>
    Value(T number);          // NOLINT(google-explicit-constructor)
    Value(double number);     // NOLINT(google-explicit-constructor)
    Value(std::string text);  // NOLINT(google-explicit-constructor)
    Value(List list);         // NOLINT(google-explicit-constructor)
    Value(Record record);     // NOLINT(google-explicit-constructor)
    Value(Sequence sequence); // NOLINT(google-explicit-constructor)
    Value(Content content);   // NOLINT(google-explicit-constructor)

    Data data;
};

struct NamedValue {
    std::string_view name; ///< as ValueSink takes it, a literal
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
inline Value::Value(Content content) : data(std::move(content)) {}

/// Shows a value.
void Put(ValueSink& sink, const Value& value);

/// The elements of an array, each shown by `put`.
template <class Items, class PutOne>
Sequence SequenceOf(const Items& items, PutOne put) {
    return {static_cast<std::size_t>(items.GetSize()),
            [&items, put](ValueSink& sink, std::size_t index) {
                put(sink, items[static_cast<std::int64_t>(index)]);
            }};
}

} // namespace nqp2::tool
