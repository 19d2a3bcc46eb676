// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/card.h"
#include "nqp2/input_text.h"
#include "nqp2/value.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Guid.h"

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>

namespace nqp2::tool {

/// One field of an exported record: its name and how its value is shown.
template <class Source>
struct Field {
    std::string_view name;
    void (*put)(ValueSink&, const Source&);
};

inline void PutField(ValueSink& sink, const CString& text) {
    sink.Put(text);
}
inline void PutField(ValueSink& sink, const GUID& guid) {
    sink.Put(std::string_view(GuidText(guid)));
}
inline void PutField(ValueSink& sink, double number) {
    sink.Put(number);
}
template <std::integral Number>
void PutField(ValueSink& sink, Number number) {
    sink.Put(Widened(number));
}
template <class Number, std::size_t Count>
void PutField(ValueSink& sink, const Number (&numbers)[Count]) {
    sink.BeginList(ListOf::Values);
    for (const Number& number : numbers) {
        PutField(sink, number);
    }
    sink.EndList();
}

template <auto Member, class Source>
void Plain(ValueSink& sink, const Source& source) {
    PutField(sink, source.*Member);
}

inline void PutPath(ValueSink& sink, const CString& path) {
    sink.Put(std::string_view(OutputPath(path)));
}

template <auto Member, class Source>
void Path(ValueSink& sink, const Source& source) {
    PutPath(sink, source.*Member);
}

template <class FieldOfSource, class Source, std::size_t Count>
void PutMembers(ValueSink& sink, const FieldOfSource (&fields)[Count], const Source& source) {
    for (const FieldOfSource& field : fields) {
        sink.Name(field.name);
        field.put(sink, source);
    }
}

template <class FieldOfSource, class Source, std::size_t Count>
void PutFields(ValueSink& sink, const FieldOfSource (&fields)[Count], const Source& source) {
    sink.BeginRecord();
    PutMembers(sink, fields, source);
    sink.EndRecord();
}

} // namespace nqp2::tool
