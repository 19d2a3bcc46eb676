// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/rewrap/field_atom.h"

#include "copy/failure.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <vector>

namespace nqp2::worker::rewrap {
namespace {

constexpr std::size_t kAtomHead = 8; ///< size and kind of an atom
constexpr std::size_t kAtomWord = 4;

std::uint32_t WordAt(std::string_view bytes, std::size_t at) {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < kAtomWord; ++i) {
        word = word << 8U | static_cast<unsigned char>(bytes[at + i]);
    }
    return word;
}

void SetWord(std::string& bytes, std::size_t at, std::uint32_t word) {
    for (std::size_t i = 0; i < kAtomWord; ++i) {
        bytes[at + i] = static_cast<char>(word >> (8 * (kAtomWord - 1 - i)));
    }
}

struct Atom {
    std::size_t at = 0;
    std::size_t end = 0;
};

/// The first atom of a kind in a stretch, from `from` on; one of any kind for "".
std::optional<Atom> Find(std::string_view bytes, std::size_t from, std::size_t end,
                         std::string_view kind) {
    while (end - from >= kAtomHead) {
        const std::size_t size = WordAt(bytes, from);
        if (size < kAtomHead || size > end - from) {
            return std::nullopt;
        }
        if (kind.empty() || bytes.substr(from + kAtomWord, kAtomWord) == kind) {
            return Atom{from, from + size};
        }
        from += size;
    }
    return std::nullopt;
}

/// From the index to the description of the track's pictures, each atom within the one before.
std::vector<Atom> WayToPictures(std::string_view index, const Atom& track) {
    constexpr std::size_t kBeforeEntries = 8; // version, flags and count
    std::vector<Atom> way = {{0, index.size()}, track};
    for (const std::string_view kind : {"mdia", "minf", "stbl", "stsd", ""}) {
        const std::size_t from = way.back().at + kAtomHead + (kind.empty() ? kBeforeEntries : 0);
        const std::optional<Atom> next =
            Find(index, std::min(from, way.back().end), way.back().end, kind);
        const bool isOfPictures =
            next && (kind != "minf" || Find(index, next->at + kAtomHead, next->end, "vmhd"));
        if (!isOfPictures) {
            return {};
        }
        way.push_back(*next);
    }
    return way;
}

std::string FieldAtom(FieldOrder order) {
    constexpr std::string_view kOneField("\1\0", 2);
    constexpr std::string_view kTopFirst("\2\1", 2);
    constexpr std::string_view kBottomFirst("\2\6", 2);
    const std::string_view fields = order == FieldOrder::TopFirst      ? kTopFirst
                                    : order == FieldOrder::BottomFirst ? kBottomFirst
                                                                       : kOneField;
    return std::string("\0\0\0\nfiel", kAtomHead).append(fields);
}

copy::Failure WithoutIndex(const OutputFile& file) {
    return copy::Failure(file.Name() + " was written without an index at its front.");
}

std::string Read(OutputFile& file, std::uint64_t position, std::size_t size) {
    std::string bytes(size, '\0');
    std::size_t count = 0;
    while (count < size) {
        const std::int64_t more = file.ReadAt(position + count, bytes.data() + count, size - count);
        if (more <= 0) {
            file.Require({});
            throw WithoutIndex(file);
        }
        count += static_cast<std::size_t>(more);
    }
    return bytes;
}

} // namespace

bool AddFieldOrder(std::string& index, FieldOrder order) {
    const std::string atom = FieldAtom(order);
    std::optional<Atom> track =
        Find(index, std::min(kAtomHead, index.size()), index.size(), "trak");
    while (track) {
        const std::vector<Atom> way = WayToPictures(index, *track);
        if (!way.empty()) {
            for (const Atom& each : way) {
                SetWord(index, each.at,
                        static_cast<std::uint32_t>(each.end - each.at + atom.size()));
            }
            index.insert(way.back().end, atom);
            return true;
        }
        track = Find(index, track->end, index.size(), "trak");
    }
    return false;
}

void TellFieldOrder(OutputFile& file, FieldOrder order) {
    const std::uint64_t at = WordAt(Read(file, 0, kAtomHead), 0); // behind what the file is
    const std::string head = Read(file, at, kAtomHead);
    if (head.substr(kAtomWord) != "moov" || WordAt(head, 0) < kAtomHead) {
        throw WithoutIndex(file);
    }
    std::string index = Read(file, at, WordAt(head, 0));
    std::string room = Read(file, at + index.size(), kAtomHead);
    const std::size_t before = index.size();
    if (!AddFieldOrder(index, order)) {
        throw WithoutIndex(file);
    }
    const std::size_t more = index.size() - before;
    if (room.substr(kAtomWord) != "free" || WordAt(room, 0) < kAtomHead + more) {
        throw WithoutIndex(file);
    }
    SetWord(room, 0, static_cast<std::uint32_t>(WordAt(room, 0) - more));
    if (!file.WriteAt(at, index + room)) {
        file.Require({});
    }
}

} // namespace nqp2::worker::rewrap
