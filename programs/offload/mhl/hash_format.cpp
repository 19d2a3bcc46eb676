// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/hash_format.h"

#include <algorithm>

namespace nqp2::mhl {

std::optional<HashFormat> HashFormatNamed(std::string_view name) {
    const auto* const found =
        std::find_if(kHashFormats.begin(), kHashFormats.end(),
                     [&](const HashFormatFacts& each) { return each.name == name; });
    return found != kHashFormats.end() ? std::optional(found->format) : std::nullopt;
}

std::string_view Hashes::Digest(HashFormat format) const {
    const HashFormatFacts& facts = FactsOf(format);
    return Has(format) ? std::string_view(m_digests.data() + facts.offset, facts.bytes)
                       : std::string_view();
}

void Hashes::Set(HashFormat format, std::string_view digest) {
    const HashFormatFacts& facts = FactsOf(format);
    std::copy_n(digest.data(), facts.bytes, m_digests.data() + facts.offset);
    m_formats |= format;
}

void Hashes::Add(const Hashes& other) {
    for (const HashFormatFacts& each : kHashFormats) {
        if (other.Has(each.format)) {
            Set(each.format, other.Digest(each.format));
        }
    }
}

Hashes Hashes::Only(FormatSet formats) const {
    Hashes only = *this;
    only.m_formats = m_formats & formats;
    return only;
}

FormatSet Hashes::SameAs(const Hashes& other) const {
    return (m_formats & other.m_formats) - OtherThan(other);
}

FormatSet Hashes::OtherThan(const Hashes& other) const {
    FormatSet formats;
    for (const HashFormatFacts& each : kHashFormats) {
        if (Has(each.format) && other.Has(each.format) &&
            Digest(each.format) != other.Digest(each.format)) {
            formats |= each.format;
        }
    }
    return formats;
}

} // namespace nqp2::mhl
