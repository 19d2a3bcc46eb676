// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/playlist_facts.h"

#include <cstddef>

namespace nqp2::avchd {
namespace {

/// Whether one time of a clip comes before another; the clock starts anew at 2^32.
bool IsEarlier(std::uint32_t time, std::uint32_t other) {
    return static_cast<std::int32_t>(time - other) < 0;
}

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

void ShotTable::Add(const Playlist& playlist) {
    for (const PlayItem& item : playlist.items) {
        if (item.shot == PlayItem::kNoShot) {
            continue;
        }
        const Shot& shot = playlist.shots[static_cast<std::size_t>(item.shot)];
        const auto [place, isNew] = m_entries.try_emplace(std::string(item.Name()));
        Entry& entry = place->second;
        if (!item.continues && (!entry.shot || IsEarlier(shot.time, entry.shot->time))) {
            entry.shot = shot;
            entry.pulldown = shot.pulldown;
        } else if (isNew) {
            entry.pulldown = shot.pulldown;
        }
    }
}

const ShotTable::Entry& ShotTable::Find(std::string_view clipName) const {
    static const Entry kUnknown;
    const auto found = m_entries.find(clipName);
    return found == m_entries.end() ? kUnknown : found->second;
}

void SplitRecordings::Add(const Playlist& playlist) {
    for (std::size_t i = 1; i < playlist.items.size(); ++i) {
        if (playlist.items[i].joined) {
            Connect(NumberOf(playlist.items[i - 1]), NumberOf(playlist.items[i]));
        }
    }
}

SplitRecordings::Links& SplitRecordings::LinksOf(Number clip) {
    return m_links.try_emplace(clip, Links{kNone, kNone, clip}).first->second;
}

void SplitRecordings::Connect(Number first, Number second) {
    Links& last = LinksOf(first);
    Links& head = LinksOf(second);
    if (last.next != kNone || head.previous != kNone || last.otherEnd == second) {
        return;
    }
    last.next = second;
    head.previous = first;
    const Number newHead = last.otherEnd;
    const Number newLast = head.otherEnd;
    LinksOf(newHead).otherEnd = newLast;
    LinksOf(newLast).otherEnd = newHead;
}

std::vector<std::vector<std::string>> SplitRecordings::Chains() const {
    std::vector<std::vector<std::string>> chains;
    for (const auto& [number, links] : m_links) {
        if (links.previous != kNone || links.next == kNone) {
            continue;
        }
        std::vector<std::string>& chain = chains.emplace_back();
        for (Number clip = number; clip != kNone; clip = m_links.at(clip).next) {
            chain.push_back(NameOf(clip));
        }
    }
    return chains;
}

} // namespace nqp2::avchd
