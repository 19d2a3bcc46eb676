// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/code_type_family.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace nqp2::media {
namespace {

struct Range {
    std::int32_t first;
    std::int32_t last;
    CodeTypeFamily family;
};

// Values without a name of their own belong to a family all the same.
constexpr Range kRanges[] = {
    {0, 0, CodeTypeFamily::StandardRate},     {12, 12, CodeTypeFamily::StandardRate},
    {23, 24, CodeTypeFamily::StandardRate},   {1, 1, CodeTypeFamily::DoubleRate},
    {13, 13, CodeTypeFamily::DoubleRate},     {26, 27, CodeTypeFamily::DoubleRate},
    {2, 2, CodeTypeFamily::HighDefinition},   {14, 16, CodeTypeFamily::HighDefinition},
    {29, 34, CodeTypeFamily::HighDefinition}, {5, 5, CodeTypeFamily::IntraHighRate},
    {17, 19, CodeTypeFamily::IntraHighRate},  {35, 42, CodeTypeFamily::IntraHighRate},
    {7, 7, CodeTypeFamily::IntraLowRate},     {20, 22, CodeTypeFamily::IntraLowRate},
    {43, 50, CodeTypeFamily::IntraLowRate},
};

constexpr std::size_t kCodeTypes = 51; ///< up to the last that has a family

/// By code type, so that no question takes a search.
constexpr std::array<CodeTypeFamily, kCodeTypes> kFamilies = [] {
    std::array<CodeTypeFamily, kCodeTypes> families{};
    families.fill(CodeTypeFamily::Other);
    for (const Range& range : kRanges) {
        for (std::int32_t type = range.first; type <= range.last; ++type) {
            families[static_cast<std::size_t>(type)] = range.family;
        }
    }
    return families;
}();

} // namespace

CodeTypeFamily FamilyOf(eCodeType type) {
    const auto value = static_cast<std::uint32_t>(type);
    return value < kCodeTypes ? kFamilies[value] : CodeTypeFamily::Other;
}

} // namespace nqp2::media
