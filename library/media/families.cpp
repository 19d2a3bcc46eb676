// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/families.h"

#include "platform/case_fold.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

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

constexpr std::wstring_view kLongGopNames[] = {L"AVC-LongG422", L"AVC-LongG420"};
constexpr std::wstring_view kIntraNames[] = {L"AVC-Intra4K_422", L"AVC-Intra4K_444",
                                             L"AVC-Intra_422"};

bool IsOneOf(std::span<const std::wstring_view> names, std::wstring_view codec) {
    return std::any_of(names.begin(), names.end(), [codec](std::wstring_view name) {
        return platform::EqualNoCase(name, codec);
    });
}

bool Contains(std::wstring_view text, std::wstring_view part) {
    return text.find(part) != std::wstring_view::npos;
}

} // namespace

CodeTypeFamily FamilyOf(eCodeType type) {
    const auto value = static_cast<std::uint32_t>(type);
    return value < kCodeTypes ? kFamilies[value] : CodeTypeFamily::Other;
}

CodecFamily FamilyOfCodec(std::wstring_view codec) {
    if (Contains(codec, L"AVC-Long") || IsOneOf(kLongGopNames, codec)) {
        return CodecFamily::LongGop;
    }
    if (Contains(codec, L"AVC-Intra") || IsOneOf(kIntraNames, codec)) {
        return CodecFamily::Intra;
    }
    return CodecFamily::Other;
}

bool LooksAtClass(ClassReader reader, std::wstring_view codec) {
    // Each with the last, in the order of ClassReader, that looks at it.
    struct Row {
        std::wstring_view codec;
        ClassReader last;
    };
    static constexpr std::array<Row, 6> kRows = {{{L"AVC-I_1080/50i", ClassReader::First},
                                                  {L"AVC-I_1080/25p", ClassReader::EditList},
                                                  {L"AVC-I_720/50p", ClassReader::EditList},
                                                  {L"AVC-I_720/59.94p", ClassReader::EditList},
                                                  {L"AVC-I_1080/59.94i", ClassReader::Scan},
                                                  {L"AVC-I_1080/29.97p", ClassReader::Scan}}};
    return std::any_of(kRows.begin(), kRows.end(),
                       [&](const Row& row) { return row.codec == codec && reader <= row.last; });
}

bool NameCarriesClass(std::wstring_view codec) {
    return IsOneOf(kLongGopNames, codec);
}

} // namespace nqp2::media
