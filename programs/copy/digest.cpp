// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "copy/digest.h"

#include "copy/failure.h"

#include <algorithm>
#include <new>
#include <xxhash.h>

namespace nqp2::copy {

namespace {

Digest::Bytes Canonical(XXH128_hash_t hash) {
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, hash);
    Digest::Bytes bytes{};
    static_assert(sizeof canonical.digest == sizeof bytes);
    std::copy(std::begin(canonical.digest), std::end(canonical.digest), bytes.begin());
    return bytes;
}

} // namespace

struct Digest::State {
    State() = default;
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() { XXH3_freeState(xxh3); }

    XXH3_state_t* xxh3 = XXH3_createState();
};

Digest::Digest(std::uint64_t seed) : m_state(std::make_unique<State>()) {
    if (m_state->xxh3 == nullptr || XXH3_128bits_reset_withSeed(m_state->xxh3, seed) != XXH_OK) {
        throw std::bad_alloc();
    }
}

Digest::~Digest() = default;

void Digest::Add(std::string_view bytes) {
    XXH3_128bits_update(m_state->xxh3, bytes.data(), bytes.size());
    m_size += bytes.size();
}

Digest::Bytes Digest::Value() const {
    return Canonical(XXH3_128bits_digest(m_state->xxh3));
}

Digest::Bytes DigestOf(std::string_view bytes) {
    return Canonical(XXH3_128bits(bytes.data(), bytes.size()));
}

void CheckReadBack(platform::FileWriter& writer, const std::string& path, std::uint64_t start,
                   std::uint64_t size, const Digest::Bytes& written, std::string& block,
                   const std::function<void(std::size_t)>& done) {
    Digest found;
    while (found.Size() < size) {
        const std::uint64_t wanted = std::min<std::uint64_t>(block.size(), size - found.Size());
        std::size_t count = 0;
        Require(writer.ReadAt(start + found.Size(), block.data(), static_cast<std::size_t>(wanted),
                              count),
                "read back", path);
        if (count == 0) {
            break; // the digests differ
        }
        found.Add(std::string_view(block.data(), count));
        done(count);
    }
    if (found.Value() != written) {
        throw Failure("What the medium gives back of " + path + " is not what was written.");
    }
}

void CheckReadBack(platform::FileWriter& writer, const std::string& path, std::uint64_t start,
                   const Digest& written, std::string& block,
                   const std::function<void(std::size_t)>& done) {
    CheckReadBack(writer, path, start, written.Size(), written.Value(), block, done);
}

void CheckReadBack(platform::FileWriter& writer, const std::string& path, std::uint64_t start,
                   std::string_view written) {
    Digest digest;
    digest.Add(written);
    std::string block(written.size(), '\0');
    CheckReadBack(writer, path, start, digest, block, [](std::size_t) {});
}

} // namespace nqp2::copy
