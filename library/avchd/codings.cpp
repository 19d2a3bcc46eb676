// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/codings.h"

#include <algorithm>
#include <iterator>

namespace nqp2::avchd {
namespace {

constexpr Coding kCodings[] = {
    {0x01, StreamKind::Video, L"MPEG-1 Video"}, {0x02, StreamKind::Video, L"MPEG-2 Video"},
    {0x1B, StreamKind::Video, L"H.264"},        {0x20, StreamKind::Video, L"H.264 MVC"},
    {0x24, StreamKind::Video, L"H.265"},        {0xEA, StreamKind::Video, L"VC-1"},
    {0x03, StreamKind::Audio, L"MPEG-1 Audio"}, {0x04, StreamKind::Audio, L"MPEG-2 Audio"},
    {0x80, StreamKind::Audio, L"LPCM"},         {0x81, StreamKind::Audio, L"AC-3"},
    {0x82, StreamKind::Audio, L"DTS"},          {0x83, StreamKind::Audio, L"TrueHD"},
    {0x84, StreamKind::Audio, L"E-AC-3"},       {0x85, StreamKind::Audio, L"DTS-HD"},
    {0x86, StreamKind::Audio, L"DTS-HD"},       {0x90, StreamKind::Subtitle, L"PGS"},
    {0x91, StreamKind::Subtitle, L"IGS"},       {0x92, StreamKind::Subtitle, L"text"},
};

struct Number {
    unsigned code;
    std::int32_t value;
};
constexpr Number kPresentations[] = {{1, 1}, {3, 2}, {6, 6}};
constexpr Number kSamplings[] = {{1, 48}, {4, 96}, {5, 192}};

template <class Table>
std::int32_t ValueIn(const Table& table, unsigned code) {
    const auto* const found = std::find_if(std::begin(table), std::end(table),
                                           [code](const Number& row) { return row.code == code; });
    return found == std::end(table) ? 0 : found->value;
}

} // namespace

const Coding* CodingOf(std::uint8_t type) {
    const auto* const found = std::find_if(std::begin(kCodings), std::end(kCodings),
                                           [type](const Coding& row) { return row.type == type; });
    return found == std::end(kCodings) ? nullptr : found;
}

std::int32_t ChannelsOf(unsigned presentation) {
    return ValueIn(kPresentations, presentation);
}

std::int32_t SamplingOf(unsigned code) {
    return ValueIn(kSamplings, code);
}

} // namespace nqp2::avchd
