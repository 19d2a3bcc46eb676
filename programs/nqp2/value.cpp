// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/value.h"

#include "nqp2/json_output.h"

#include <fmt/format.h>

namespace nqp2::tool {
namespace {

/// Collects the leaves of a value under their names.
class Flattener {
public:
    explicit Flattener(Flatten depth) : m_depth(depth) {}

    void Add(const std::string& name, const Value& value) {
        std::visit([&](const auto& data) { AddData(name, data); }, value.data);
    }
    std::vector<FlatField> Take() { return std::move(m_fields); }

private:
    void AddData(const std::string& name, const std::string& text) {
        m_fields.push_back({name, text});
    }
    template <class Number>
    void AddData(const std::string& name, Number number) {
        m_fields.push_back({name, fmt::format("{}", number)});
    }
    void AddData(const std::string& name, const Record& record) {
        for (const NamedValue& member : record) {
            Add(name + '.' + member.name, member.value);
        }
    }
    void AddData(const std::string& name, const List& list) {
        if (m_depth == Flatten::KeepListsOfRecords && !HoldsTexts(list)) {
            m_fields.push_back({name, JsonText(list)});
            return;
        }
        for (std::size_t i = 0; i < list.size(); ++i) {
            Add(fmt::format("{}.{}", name, i), list[i]);
        }
    }
    void AddData(const std::string& name, const Sequence& sequence) {
        if (m_depth == Flatten::KeepListsOfRecords) {
            m_fields.push_back({name, JsonText(sequence)});
            return;
        }
        for (std::size_t i = 0; i < sequence.count; ++i) {
            Add(fmt::format("{}.{}", name, i), sequence.at(i));
        }
    }
    static bool HoldsTexts(const List& list) {
        return !list.empty() && std::holds_alternative<std::string>(list.front().data);
    }

    Flatten m_depth;
    std::vector<FlatField> m_fields;
};

} // namespace

std::vector<FlatField> FlatFields(const Record& record, Flatten depth) {
    Flattener flattener(depth);
    for (const NamedValue& member : record) {
        flattener.Add(member.name, member.value);
    }
    return flattener.Take();
}

} // namespace nqp2::tool
