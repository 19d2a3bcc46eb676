// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/file_head.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

namespace nqp2::avchd {
namespace {

constexpr std::size_t kHeadSize = 40;
constexpr std::string_view kVersions[] = {"0100", "0200", "0240", "0300"};

bool IsKnownVersion(Bytes text) {
    return std::any_of(std::begin(kVersions), std::end(kVersions), [text](std::string_view known) {
        return std::memcmp(text.data(), known.data(), known.size()) == 0;
    });
}

} // namespace

std::optional<FileHead> DecodeHead(Bytes file, const char (&kind)[5]) {
    if (file.size() < kHeadSize) {
        return std::nullopt;
    }
    ByteReader reader(file);
    const Bytes magic = reader.Take(4);
    if (std::memcmp(magic.data(), kind, magic.size()) != 0 || !IsKnownVersion(reader.Take(4))) {
        return std::nullopt;
    }
    FileHead head;
    for (std::uint32_t& section : head.sections) {
        const std::uint32_t address = reader.U32();
        section = address < kHeadSize ? 0 : address;
    }
    return head;
}

std::optional<Bytes> NeededSection(Bytes file, std::uint32_t address) {
    return address == 0 ? std::nullopt : SectionAt(file, address);
}

Bytes OptionalSection(Bytes file, std::uint32_t address) {
    return address == 0 ? Bytes() : SectionPartAt(file, address);
}

} // namespace nqp2::avchd
