// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/own_list.h"

#include "offload/mhl/hash_format.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace nqp2::offload {
namespace {

/// The hashes of a whole file in some formats; nothing when it cannot be read.
std::optional<mhl::Hashes> HashesOf(platform::FileReader& file, mhl::FormatSet formats) {
    constexpr std::size_t kBlock = std::size_t{1} << 20U;
    mhl::Hasher hasher(formats);
    std::string block(kBlock, '\0');
    for (std::size_t count = 1; count != 0;) {
        if (!file.Read(block.data(), block.size(), count)) {
            return std::nullopt;
        }
        hasher.Add(std::string_view(block.data(), count));
    }
    return hasher.Value();
}

} // namespace

std::string WhyKept(const mhl::History& list, const std::string& path,
                    platform::FileReader& there) {
    const mhl::Tree& expected = list.Expected();
    const mhl::NodeId node = expected.Find(path);
    if (node == mhl::kNoNode || expected.IsFolder(node) || !list.IsExpected(node)) {
        return "";
    }
    const mhl::Hashes recorded = expected.HashesOf(node);
    const bool hasSize = expected.SizeOf(node).value_or(there.Size()) == there.Size();
    if (recorded.Formats().IsEmpty() || !hasSize) {
        return "";
    }
    there.ReadAround();
    const std::optional<mhl::Hashes> now = HashesOf(there, recorded.Formats());
    return now && now->OtherThan(recorded).IsEmpty()
               ? "it is what the copy's own list says, and the card's file is not"
               : "";
}

} // namespace nqp2::offload
