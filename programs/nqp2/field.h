// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/card.h"
#include "nqp2/input_text.h"
#include "nqp2/value.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Guid.h"
#include "NQP2ParserU/TextBytes.h"

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>

namespace nqp2::tool {

/// One field of an exported record: its name and how its value is read.
template <class Source>
struct Field {
    std::string_view name;
    Value (*get)(const Source&);
};

inline Value ValueOf(const CString& text) {
    return BytesFromText(text);
}
inline Value ValueOf(const GUID& guid) {
    return GuidText(guid);
}
template <class Number>
requires std::integral<Number> || std::floating_point<Number> Value ValueOf(Number number) {
    return number;
}
template <class Element, std::size_t Count>
Value ValueOf(const Element (&elements)[Count]) {
    List list;
    for (const Element& element : elements) {
        list.push_back(ValueOf(element));
    }
    return list;
}

template <auto Member, class Source>
Value Plain(const Source& source) {
    return ValueOf(source.*Member);
}

template <auto Member, class Source>
Value Path(const Source& source) {
    return RealPath(source.*Member);
}

template <class FieldOfSource, class Source, std::size_t Count>
Record Fields(const FieldOfSource (&fields)[Count], const Source& source) {
    Record record;
    record.reserve(Count);
    for (const FieldOfSource& field : fields) {
        record.push_back({std::string(field.name), field.get(source)});
    }
    return record;
}

} // namespace nqp2::tool
