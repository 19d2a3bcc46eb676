// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/records.h"

#include <cstdint>
#include <random>
#include <string>

/// Made-up cards for catalogues.
namespace nqp2::bench {

/// The same words each time; low numbers come often, as in a language.
class Language {
public:
    explicit Language(std::uint64_t seed = 1) : m_random(seed) {}
    std::string Words(int count);
    std::string Word();
    std::uint64_t Below(std::uint64_t bound) { return m_random() % bound; }

private:
    std::mt19937_64 m_random;
    std::uniform_real_distribution<double> m_share{0, 1};
};

/// A card of that number among others of as many clips each.
catalogue::CardContents MadeCard(Language& language, std::int64_t number, std::int64_t clips);

} // namespace nqp2::bench
