// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/value.h"

namespace nqp2::tool {
namespace {

template <class Data>
void PutData(ValueSink& sink, const Data& data) {
    sink.Put(data);
}
void PutData(ValueSink& sink, const List& list) {
    const bool ofTexts = !list.empty() && std::holds_alternative<std::string>(list.front().data);
    sink.BeginList(ofTexts ? ListOf::Texts : ListOf::Values);
    for (const Value& element : list) {
        Put(sink, element);
    }
    sink.EndList();
}
void PutData(ValueSink& sink, const Record& record) {
    sink.BeginRecord();
    for (const NamedValue& member : record) {
        sink.Name(member.name);
        Put(sink, member.value);
    }
    sink.EndRecord();
}
void PutData(ValueSink& sink, const Sequence& sequence) {
    sink.BeginList(ListOf::Records);
    for (std::size_t i = 0; i < sequence.count; ++i) {
        sequence.put(sink, i);
    }
    sink.EndList();
}
void PutData(ValueSink& sink, const Content& content) {
    content(sink);
}

} // namespace

void Put(ValueSink& sink, const Value& value) {
    std::visit([&sink](const auto& data) { PutData(sink, data); }, value.data);
}

} // namespace nqp2::tool
