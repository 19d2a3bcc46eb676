// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/value.h"
#include "nqp2/card.h"
#include "nqp2/fetch.h"
#include "nqp2/input_text.h"
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
    constexpr Field(std::string_view ofField, void (*shown)(ValueSink&, const Source&))
        : name(ofField), put(shown) {}
    template <class Shown>
    constexpr Field(std::string_view ofField, Shown /*shown*/)
        : name(ofField), put(Shown::template Put<Source>), fetch(Shown::template Fetch<Source>) {}

    std::string_view name;
    void (*put)(ValueSink&, const Source&);
    void (*fetch)(const Source&) = nullptr; ///< asks for the texts that `put` will read
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

inline void PutPath(ValueSink& sink, const CString& path) {
    sink.Put(std::string_view(OutputPath(path)));
}
template <std::size_t Count>
void PutPath(ValueSink& sink, const CString (&paths)[Count]) {
    sink.BeginList(ListOf::Texts);
    for (const CString& path : paths) {
        PutPath(sink, path);
    }
    sink.EndList();
}

// Tables say Plain, Path and Members as they say the functions beside them.

/// A member that is shown as it is.
template <auto Member>
struct PlainMember {
    template <class Source>
    static void Put(ValueSink& sink, const Source& source) {
        PutField(sink, source.*Member);
    }
    template <class Source>
    static void Fetch(const Source& source) {
        FetchTexts<kLinesOfText>(source.*Member);
    }
};
template <auto Member> // NOLINTNEXTLINE(readability-identifier-naming)
inline constexpr PlainMember<Member> Plain;

/// One that holds interface paths.
template <auto Member>
struct PathMember {
    template <class Source>
    static void Put(ValueSink& sink, const Source& source) {
        PutPath(sink, source.*Member);
    }
    template <class Source>
    static void Fetch(const Source& source) {
        FetchTexts<kLinesOfPath>(source.*Member);
    }
};
template <auto Member> // NOLINTNEXTLINE(readability-identifier-naming)
inline constexpr PathMember<Member> Path;

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

template <class FieldOfSource, class Source, std::size_t Count>
void FetchFields(const FieldOfSource (&fields)[Count], const Source& source) {
    for (const FieldOfSource& field : fields) {
        if (field.fetch != nullptr) {
            field.fetch(source);
        }
    }
}

/// One that is a record.
template <auto Member, const auto& Fields>
struct RecordMember {
    template <class Source>
    static void Put(ValueSink& sink, const Source& source) {
        PutFields(sink, Fields, source.*Member);
    }
    template <class Source>
    static void Fetch(const Source& source) {
        FetchFields(Fields, source.*Member);
    }
};
template <auto Member, const auto& Fields> // NOLINTNEXTLINE(readability-identifier-naming)
inline constexpr RecordMember<Member, Fields> Members;

} // namespace nqp2::tool
