// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_order.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

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

/// The start of a name in capitals as one number, in the order of the names. It ends before what
/// takes more than a byte, which counts as the last of bytes.
std::uint64_t StartOf(const CString& name) {
    constexpr int kBytes = sizeof(std::uint64_t);
    constexpr unsigned kEnd = 0xFF;
    const CString start = name.Left(kBytes).MakeUpper();
    std::uint64_t number = 0;
    for (int shift = 8 * kBytes; const wchar_t ch : start.View()) {
        const unsigned byte = std::min(static_cast<unsigned>(ch), kEnd);
        shift -= 8;
        number |= std::uint64_t{byte} << static_cast<unsigned>(shift);
        if (byte == kEnd) {
            break;
        }
    }
    return number;
}

/// A clip with the start of its name: who sorts thousands of large records by their names alone
/// waits for memory.
struct ClipStart {
    std::uint64_t start;
    const Clip* clip;
};

// Clips lie in the order in which they came, which decides between equal names: no room is taken
// for a stable sort.
void SortByName(ClipOrder& order) {
    std::vector<ClipStart> named;
    named.reserve(order.size());
    std::transform(order.begin(), order.end(), std::back_inserter(named), [](const Clip* clip) {
        return ClipStart{StartOf(clip->ClipName), clip};
    });
    std::sort(named.begin(), named.end(), [](const ClipStart& left, const ClipStart& right) {
        if (left.start != right.start) {
            return left.start < right.start;
        }
        const bool isBefore = NameBefore(left.clip, right.clip);
        return isBefore || (left.clip < right.clip && !NameBefore(right.clip, left.clip));
    });
    std::transform(named.begin(), named.end(), order.begin(),
                   [](const ClipStart& clip) { return clip.clip; });
}

void SortByDate(ClipOrder& order) {
    std::stable_sort(order.begin(), order.end(), DateBefore);
}

void KeepOrder(ClipOrder& /*order*/) {}

struct NamedOrder {
    const char* name;
    void (*sort)(ClipOrder& order);
    bool isOfAll; ///< of the clips of all cards together
};
/// "none" is the order of the card's folder.
constexpr NamedOrder kOrders[] = {
    {"date", SortByDate, true}, {"name", SortByName, false}, {"none", KeepOrder, false}};

/// Appends a card's clips in the order of their folder.
void Append(const CardScan& scan, ClipOrder& order) {
    order.reserve(order.size() + static_cast<std::size_t>(scan.clips.GetSize()));
    for (const Clip& clip : scan.clips) {
        order.push_back(&clip);
    }
}

ClipOrder CardByCard(const CardScans& scans, const NamedOrder& named) {
    ClipOrder all;
    for (const CardScan& scan : scans.cards) {
        ClipOrder order;
        Append(scan, order);
        named.sort(order);
        if (all.empty()) {
            all = std::move(order);
        } else {
            all.insert(all.end(), order.begin(), order.end());
        }
    }
    return all;
}

} // namespace

std::vector<std::string> ClipOrderNames() {
    std::vector<std::string> names;
    for (const NamedOrder& order : kOrders) {
        names.emplace_back(order.name);
    }
    return names;
}

ClipOrder OrderedClips(const CardScans& scans, const std::string& name) {
    const NamedOrder& named =
        *std::find_if(std::begin(kOrders), std::end(kOrders),
                      [&](const NamedOrder& candidate) { return candidate.name == name; });
    if (!named.isOfAll) {
        return CardByCard(scans, named);
    }
    ClipOrder order;
    for (const CardScan& scan : scans.cards) {
        Append(scan, order);
    }
    named.sort(order);
    return order;
}

} // namespace nqp2::tool
