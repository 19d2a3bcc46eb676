// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/rewrap/units_of_h264.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace nqp2::worker::rewrap {
namespace {

constexpr std::size_t kStartCode = 3; ///< 0, 0, 1
constexpr int kSequenceSet = 7;
constexpr int kPictureSet = 8;
constexpr int kDelimiter = 9;

std::uint8_t At(std::string_view bytes, std::size_t at) {
    return static_cast<std::uint8_t>(bytes[at]);
}

int KindOf(std::string_view piece) {
    return piece.empty() ? 0 : At(piece, 0) & 0x1F;
}

/// Where the next start code is; the end when there is none.
std::size_t FindStart(std::string_view unit, std::size_t from) {
    std::size_t at = from + kStartCode - 1;
    while (at < unit.size()) {
        const void* const found = std::memchr(unit.data() + at, 1, unit.size() - at);
        if (found == nullptr) {
            break;
        }
        at = static_cast<std::size_t>(static_cast<const char*>(found) - unit.data());
        if (unit[at - 1] == 0 && unit[at - 2] == 0) {
            return at - 2;
        }
        ++at;
    }
    return unit.size();
}

/// Units of one size have very many behind them.
std::string_view WithoutZeros(std::string_view piece) {
    std::uint64_t word = 0;
    while (piece.size() >= sizeof word) {
        std::memcpy(&word, piece.data() + piece.size() - sizeof word, sizeof word);
        if (word != 0) {
            break;
        }
        piece.remove_suffix(sizeof word);
    }
    const std::size_t last = piece.find_last_not_of('\0');
    return piece.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

template <class Take>
void ForEachMarked(std::string_view unit, Take take) {
    std::size_t start = FindStart(unit, 0);
    while (start < unit.size()) {
        const std::size_t begin = start + kStartCode;
        start = FindStart(unit, begin);
        take(unit.substr(begin, start - begin));
    }
}

template <class Take>
bool ForEachCounted(std::string_view unit, std::size_t lengthBytes, Take take) {
    while (unit.size() >= lengthBytes) {
        std::size_t length = 0;
        for (std::size_t i = 0; i < lengthBytes; ++i) {
            length = length << 8U | At(unit, i);
        }
        unit.remove_prefix(lengthBytes);
        if (length > unit.size()) {
            return false;
        }
        take(unit.substr(0, length));
        unit.remove_prefix(length);
    }
    return WithoutZeros(unit).empty();
}

template <class Take>
bool ForEachPiece(std::string_view unit, const UnitForm& form, Take take) {
    if (form.lengthBytes != 0) {
        return ForEachCounted(unit, form.lengthBytes, take);
    }
    ForEachMarked(unit, take);
    return true;
}

/// Whether zeros fill a stretch of it that begins at a multiple of eight bytes: no piece has three
/// in a row.
bool HasZeros(std::string_view piece) {
    std::uint64_t word = 0;
    for (std::size_t at = 0; at + sizeof word <= piece.size(); at += sizeof word) {
        std::memcpy(&word, piece.data() + at, sizeof word);
        if (word == 0) {
            return true;
        }
    }
    return false;
}

/// Whether a slice begins where its picture does.
bool IsFirstSlice(std::string_view slice) {
    constexpr std::uint8_t kZero = 0x80; // the number of its first block
    return slice.size() > 1 && (At(slice, 1) & kZero) != 0;
}

const char* FaultOf(std::string_view piece, bool isFirstSlice) {
    constexpr std::uint8_t kForbidden = 0x80;
    if (piece.empty() || (At(piece, 0) & kForbidden) != 0) {
        return "a piece of its H.264 is none";
    }
    if (HasZeros(piece)) {
        return "zeros lie in its H.264";
    }
    return isFirstSlice && !IsFirstSlice(piece) ? "its first slice is missing" : "";
}

bool IsSlice(std::string_view piece) {
    constexpr int kSlice = 1;
    constexpr int kSliceOfKey = 5;
    return KindOf(piece) == kSlice || KindOf(piece) == kSliceOfKey;
}

} // namespace

UnitForm UnitForm::Of(std::string_view parameterSets) {
    constexpr std::size_t kLengthAt = 4;
    const bool isRecord = parameterSets.size() > kLengthAt && parameterSets[0] == 1;
    return {isRecord ? (At(parameterSets, kLengthAt) & 3U) + std::size_t{1} : 0};
}

void ParameterSets::Add(std::string_view set) {
    constexpr std::size_t kMost = 64;
    if (m_sets.size() < kMost && m_sets.find(set) == m_sets.end()) {
        m_sets.emplace(set);
    }
}

bool ParameterSets::Includes(const ParameterSets& other) const {
    return std::includes(m_sets.begin(), m_sets.end(), other.m_sets.begin(), other.m_sets.end());
}

bool AddPieces(std::string_view unit, const UnitForm& form, copy::Digest& digest,
               ParameterSets& sets) {
    return ForEachPiece(unit, form, [&](std::string_view whole) {
        const std::string_view piece = WithoutZeros(whole);
        const int kind = KindOf(piece);
        if (kind == kSequenceSet || kind == kPictureSet) {
            sets.Add(piece);
        } else if (!piece.empty()) {
            const std::uint64_t size = piece.size();
            digest.Add({reinterpret_cast<const char*>(&size), sizeof size});
            digest.Add(piece);
        }
    });
}

UnitShape ShapeOf(std::string_view unit, const UnitForm& form) {
    constexpr std::size_t kMostBefore = 16; // zeros
    UnitShape shape;
    if (form.lengthBytes == 0 && (FindStart(unit, 0) > kMostBefore || // all of them zeros
                                  unit.find_first_not_of('\0') < FindStart(unit, 0))) {
        shape.fault = "its H.264 does not begin with a start code";
        return shape;
    }
    const bool isWhole = ForEachPiece(unit, form, [&](std::string_view whole) {
        const std::string_view piece = WithoutZeros(whole);
        const bool isSlice = IsSlice(piece);
        if (shape.fault.empty()) {
            shape.fault = FaultOf(piece, isSlice && shape.slices == 0);
        }
        shape.slices += isSlice ? 1 : 0;
        shape.pictures += isSlice && IsFirstSlice(piece) ? 1U : 0U;
    });
    if (shape.fault.empty() && (!isWhole || shape.slices == 0)) {
        shape.fault = isWhole ? "it has no slice" : "its pieces do not fill it";
    }
    return shape;
}

void AddOwnSets(std::string_view parameterSets, ParameterSets& sets) {
    constexpr std::size_t kCountAt = 5;
    constexpr std::size_t kSetLength = 2;
    if (UnitForm::Of(parameterSets).lengthBytes == 0) {
        ForEachMarked(parameterSets, [&](std::string_view set) { sets.Add(WithoutZeros(set)); });
        return;
    }
    std::string_view rest = parameterSets.substr(kCountAt);
    for (const unsigned mask : {0x1FU, 0xFFU}) { // sequence sets, picture sets
        unsigned count = rest.empty() ? 0 : At(rest, 0) & mask;
        rest.remove_prefix(std::min<std::size_t>(rest.size(), 1));
        for (; count > 0 && rest.size() >= kSetLength; --count) {
            const std::size_t length = std::size_t{At(rest, 0)} * 256 + At(rest, 1);
            sets.Add(WithoutZeros(rest.substr(kSetLength, length)));
            rest.remove_prefix(std::min(rest.size(), kSetLength + length));
        }
    }
}

std::string SetsIn(std::string_view unit) {
    constexpr std::string_view kLongStart("\0\0\0\1", 4);
    std::string sets;
    ForEachMarked(unit, [&](std::string_view piece) {
        if (KindOf(piece) == kSequenceSet || KindOf(piece) == kPictureSet) {
            sets.append(kLongStart).append(WithoutZeros(piece));
        }
    });
    return sets;
}

std::string WithParameterSets(std::string_view unit, std::string_view sets) {
    const std::size_t first = FindStart(unit, 0);
    std::size_t at = 0;
    if (first < unit.size() && KindOf(unit.substr(first + kStartCode)) == kDelimiter) {
        at = FindStart(unit, first + kStartCode);
        const bool isLong = at > 0 && at < unit.size() && unit[at - 1] == 0; // of four bytes
        at -= isLong ? std::size_t{1} : 0;
    }
    std::string whole(unit.substr(0, at));
    whole.append(sets);
    return whole.append(unit.substr(at));
}

} // namespace nqp2::worker::rewrap
