// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/field_set.h"

#include <algorithm>

namespace nqp2::dom {
namespace {

FieldSet::Name& Step(FieldSet::Name& from, std::string_view name) {
    const auto found = std::find_if(from.below.begin(), from.below.end(),
                                    [&](const FieldSet::Name& each) { return each.name == name; });
    if (found != from.below.end()) {
        return *found;
    }
    from.below.push_back({name, {}, FieldSet::Role::Passed, 0, 0, {}});
    return from.below.back();
}

FieldSet::Name& Walk(FieldSet::Name& from, std::string_view path) {
    FieldSet::Name* at = &from;
    for (;;) {
        const std::size_t slash = path.find('/');
        at = &Step(*at, path.substr(0, slash));
        if (slash == std::string_view::npos) {
            return *at;
        }
        path.remove_prefix(slash + 1);
    }
}

} // namespace

FieldSet::FieldSet(std::string_view base, std::span<const ValuePath> values,
                   std::span<const ListPath> lists)
    : m_valueCount(values.size()) {
    Name& content = Walk(m_top, base.substr(base.find_first_not_of('/')));
    content.role = Role::Base;
    for (std::size_t i = 0; i < values.size(); ++i) {
        Name& value = Walk(content, values[i].below);
        value.role = Role::Value;
        value.index = i;
        value.attribute = values[i].attribute;
    }
    for (std::size_t i = 0; i < lists.size(); ++i) {
        Name& list = Walk(content, lists[i].below);
        list.role = Role::List;
        list.index = i;
        m_cellCounts.push_back(lists[i].cells.size());
        for (std::size_t k = 0; k < lists[i].cells.size(); ++k) {
            Name& cell = Walk(list, lists[i].cells[k]);
            cell.role = Role::Cell;
            cell.index = k;
            cell.list = i;
        }
    }
}

const FieldSet::Name* FieldSet::Name::Below(std::string_view child) const {
    const auto found = std::find_if(below.begin(), below.end(),
                                    [&](const Name& each) { return each.name == child; });
    return found != below.end() ? &*found : nullptr;
}

} // namespace nqp2::dom
