// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// ASC MHL 2.0: hash lists of copied folders. Knows files and their hashes; copies nothing.
namespace nqp2::mhl {

/// In the order of their names, which is the order in a manifest.
enum class HashFormat : std::uint8_t { C4, Md5, Sha1, Xxh128, Xxh3, Xxh64 };

struct HashFormatFacts {
    HashFormat format;
    std::string_view name;  ///< of the element, of an option
    std::size_t bytes;      ///< of the digest
    std::size_t characters; ///< of its text
    std::size_t offset;     ///< of the digest among those of all formats
};

inline constexpr std::array<HashFormatFacts, 6> kHashFormats = {{
    {HashFormat::C4, "c4", 64, 90, 0},
    {HashFormat::Md5, "md5", 16, 32, 64},
    {HashFormat::Sha1, "sha1", 20, 40, 80},
    {HashFormat::Xxh128, "xxh128", 16, 32, 100},
    {HashFormat::Xxh3, "xxh3", 8, 16, 116},
    {HashFormat::Xxh64, "xxh64", 8, 16, 124},
}};
inline constexpr std::size_t kAllDigestBytes =
    kHashFormats.back().offset + kHashFormats.back().bytes;

constexpr const HashFormatFacts& FactsOf(HashFormat format) {
    return kHashFormats[static_cast<std::size_t>(format)];
}

/// The format of that name, in lower case.
std::optional<HashFormat> HashFormatNamed(std::string_view name);

/// A set of formats.
class FormatSet {
public:
    constexpr FormatSet() = default;
    constexpr FormatSet(HashFormat format) : m_bits(Bit(format)) {}
    /// As Bits gave it.
    static constexpr FormatSet Of(std::uint8_t bits) {
        FormatSet set;
        set.m_bits = bits;
        return set;
    }
    static constexpr FormatSet All() { return Of((1U << kHashFormats.size()) - 1U); }

    [[nodiscard]] constexpr bool Has(HashFormat format) const {
        return (m_bits & Bit(format)) != 0;
    }
    [[nodiscard]] constexpr bool IsEmpty() const { return m_bits == 0; }
    [[nodiscard]] constexpr std::uint8_t Bits() const { return m_bits; }
    /// Bytes of the digests of all of them.
    [[nodiscard]] constexpr std::size_t DigestBytes() const {
        std::size_t sum = 0;
        for (const HashFormatFacts& each : kHashFormats) {
            sum += Has(each.format) ? each.bytes : 0;
        }
        return sum;
    }

    friend constexpr FormatSet operator|(FormatSet a, FormatSet b) {
        return Of(static_cast<std::uint8_t>(a.m_bits | b.m_bits));
    }
    friend constexpr FormatSet operator&(FormatSet a, FormatSet b) {
        return Of(static_cast<std::uint8_t>(a.m_bits & b.m_bits));
    }
    /// Those of a that are not in b.
    friend constexpr FormatSet operator-(FormatSet a, FormatSet b) {
        return Of(static_cast<std::uint8_t>(a.m_bits & ~b.m_bits));
    }
    constexpr FormatSet& operator|=(FormatSet other) { return *this = *this | other; }
    friend constexpr bool operator==(FormatSet a, FormatSet b) = default;

private:
    static constexpr std::uint8_t Bit(HashFormat format) {
        return static_cast<std::uint8_t>(1U << static_cast<unsigned>(format));
    }

    std::uint8_t m_bits = 0;
};

/// The digests of one content in some formats. A value to hand on; who keeps those of many files
/// keeps them in a Tree, which takes no more than their bytes.
class Hashes {
public:
    [[nodiscard]] FormatSet Formats() const { return m_formats; }
    [[nodiscard]] bool Has(HashFormat format) const { return m_formats.Has(format); }
    /// The raw digest; empty when there is none of that format.
    [[nodiscard]] std::string_view Digest(HashFormat format) const;
    /// `digest` has the format's size.
    void Set(HashFormat format, std::string_view digest);
    /// Takes over what the other has.
    void Add(const Hashes& other);
    /// Those of the formats that it has.
    [[nodiscard]] Hashes Only(FormatSet formats) const;
    /// As manifests, chains and options write it; "" when there is none of that format.
    [[nodiscard]] std::string Text(HashFormat format) const;

    /// The formats that both have with the same digest, and those with another one.
    [[nodiscard]] FormatSet SameAs(const Hashes& other) const;
    [[nodiscard]] FormatSet OtherThan(const Hashes& other) const;
    friend bool operator==(const Hashes& a, const Hashes& b) {
        return a.m_formats == b.m_formats && a.OtherThan(b).IsEmpty();
    }

private:
    FormatSet m_formats;
    std::array<char, kAllDigestBytes> m_digests; ///< what is not in m_formats is undefined
};

/// Adds the text of a raw digest.
void AppendHashText(HashFormat format, std::string_view digest, std::string& text);
/// Takes a text apart; "" when that went well, else what is wrong with it ("is written in capital
/// letters").
std::string ParseHashText(HashFormat format, std::string_view text, Hashes& hashes);

/// Hashes bytes that come piece by piece, in several formats at once. Made once for many contents,
/// which saves time with small ones. One thread at a time.
class Hasher {
public:
    explicit Hasher(FormatSet formats);
    ~Hasher();
    Hasher(Hasher&& other) noexcept;
    Hasher& operator=(Hasher&& other) noexcept;

    [[nodiscard]] FormatSet Formats() const { return m_formats; }
    void Add(std::string_view bytes);
    /// The hashes of all that was added; the next Add begins a new content.
    Hashes Value();

private:
    struct State;
    FormatSet m_formats;
    std::unique_ptr<State> m_state;
};

} // namespace nqp2::mhl
