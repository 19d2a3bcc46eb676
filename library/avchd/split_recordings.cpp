// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/split_recordings.h"

#include <cstddef>

namespace nqp2::avchd {
namespace {

std::uint32_t NumberOf(const PlayItem& item) {
    std::uint32_t number = 0;
    for (const char digit : item.clipName) {
        number = number * 10 + static_cast<std::uint32_t>(digit - '0');
    }
    return number;
}

std::string NameOf(std::uint32_t number) {
    std::string name(PlayItem().clipName.size(), '0');
    for (auto digit = name.rbegin(); digit != name.rend(); ++digit) {
        *digit = static_cast<char>('0' + number % 10);
        number /= 10;
    }
    return name;
}

} // namespace

void SplitRecordings::Add(const Playlist& playlist) {
    for (std::size_t i = 1; i < playlist.items.size(); ++i) {
        if (playlist.items[i].joined) {
            Connect(NumberOf(playlist.items[i - 1]), NumberOf(playlist.items[i]));
        }
    }
}

SplitRecordings::Place& SplitRecordings::PlaceOf(Number clip) {
    return m_places.try_emplace(clip, Place{kNone, kNone, clip}).first->second;
}

void SplitRecordings::Connect(Number first, Number second) {
    Place& last = PlaceOf(first);
    Place& head = PlaceOf(second);
    if (last.next != kNone || head.previous != kNone || last.otherEnd == second) {
        return;
    }
    last.next = second;
    head.previous = first;
    const Number newHead = last.otherEnd;
    const Number newLast = head.otherEnd;
    PlaceOf(newHead).otherEnd = newLast;
    PlaceOf(newLast).otherEnd = newHead;
}

std::vector<std::vector<std::string>> SplitRecordings::Chains() const {
    std::vector<std::vector<std::string>> chains;
    for (const auto& [number, place] : m_places) {
        if (place.previous != kNone || place.next == kNone) {
            continue;
        }
        std::vector<std::string>& chain = chains.emplace_back();
        for (Number clip = number; clip != kNone; clip = m_places.at(clip).next) {
            chain.push_back(NameOf(clip));
        }
    }
    return chains;
}

} // namespace nqp2::avchd
