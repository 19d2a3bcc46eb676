// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_order.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

namespace nqp2::tool {
namespace {

using Clip = _tag_P2Clip;

bool NameBefore(const Clip* left, const Clip* right) {
    const int order = left->ClipName.CompareNoCase(right->ClipName);
    return order != 0 ? order < 0 : left->ClipName < right->ClipName;
}

/// By shooting start, clips without one last.
bool DateBefore(const Clip* left, const Clip* right) {
    const bool leftDated = !left->StartDate.IsEmpty();
    const bool rightDated = !right->StartDate.IsEmpty();
    if (leftDated != rightDated) {
        return leftDated;
    }
    return left->StartDate == right->StartDate ? NameBefore(left, right)
                                               : left->StartDate < right->StartDate;
}

/// A clip with the start of its name, in capitals and filled up with zeros: who sorts thousands of
/// large records by their names alone waits for memory.
struct NamedClip {
    explicit NamedClip(const Clip& source) : clip(&source) {
        const CString start = source.ClipName.Left(static_cast<int>(name.size())).MakeUpper();
        std::copy(start.View().begin(), start.View().end(), name.begin());
    }
    std::array<wchar_t, 8> name = {};
    const Clip* clip;
};

void SortByName(ClipOrder& order) {
    std::vector<NamedClip> named;
    named.reserve(order.size());
    std::transform(order.begin(), order.end(), std::back_inserter(named),
                   [](const Clip* clip) { return NamedClip(*clip); });
    std::stable_sort(named.begin(), named.end(), [](const NamedClip& left, const NamedClip& right) {
        return left.name == right.name ? NameBefore(left.clip, right.clip) : left.name < right.name;
    });
    std::transform(named.begin(), named.end(), order.begin(),
                   [](const NamedClip& clip) { return clip.clip; });
}

void SortByDate(ClipOrder& order) {
    std::stable_sort(order.begin(), order.end(), DateBefore);
}

void KeepOrder(ClipOrder& /*order*/) {}

struct NamedOrder {
    const char* name;
    void (*sort)(ClipOrder& order);
};
/// "none" is the order of the card's folder.
constexpr NamedOrder kOrders[] = {{"date", SortByDate}, {"name", SortByName}, {"none", KeepOrder}};

} // namespace

std::vector<std::string> ClipOrderNames() {
    std::vector<std::string> names;
    for (const NamedOrder& order : kOrders) {
        names.emplace_back(order.name);
    }
    return names;
}

ClipOrder OrderedClips(const CArray<_tag_P2Clip>& clips, const std::string& name) {
    ClipOrder order;
    order.reserve(static_cast<std::size_t>(clips.GetSize()));
    for (const Clip& clip : clips) {
        order.push_back(&clip);
    }
    std::find_if(std::begin(kOrders), std::end(kOrders), [&](const NamedOrder& candidate) {
        return candidate.name == name;
    })->sort(order);
    return order;
}

} // namespace nqp2::tool
