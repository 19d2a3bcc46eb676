// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/file_system.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace nqp2::copy {

/// XXH3 in 128 bits of bytes that come piece by piece: chance faults do not pass it, and it is
/// faster than any medium.
class Digest {
public:
    using Bytes = std::array<unsigned char, 16>;

    explicit Digest(std::uint64_t seed = 0);
    ~Digest();
    Digest(const Digest&) = delete;
    Digest& operator=(const Digest&) = delete;

    void Add(std::string_view bytes);
    /// How many bytes were added.
    [[nodiscard]] std::uint64_t Size() const { return m_size; }
    /// The digest of what was added so far.
    [[nodiscard]] Bytes Value() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
    std::uint64_t m_size = 0;
};

/// Of bytes that are all there.
Digest::Bytes DigestOf(std::string_view bytes);

/// Reads `size` bytes at `start` back back from the medium, by blocks into `block`, and fails unless
/// they have the digest. `done` is told the size of each block.
void CheckReadBack(platform::FileWriter& writer, const std::string& path, std::uint64_t start,
                   std::uint64_t size, const Digest::Bytes& written, std::string& block,
                   const std::function<void(std::size_t)>& done);
/// The same for all that the digest was made of.
void CheckReadBack(platform::FileWriter& writer, const std::string& path, std::uint64_t start,
                   const Digest& written, std::string& block,
                   const std::function<void(std::size_t)>& done);
/// The same for what is still in memory.
void CheckReadBack(platform::FileWriter& writer, const std::string& path, std::uint64_t start,
                   std::string_view written);

} // namespace nqp2::copy
