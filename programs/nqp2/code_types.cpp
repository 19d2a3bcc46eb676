// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/code_types.h"

#include "console/console.h"
#include "nqp2/input_text.h"
#include "nqp2/near_name.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <algorithm>
#include <cctype>
#include <optional>
#include <string_view>

namespace nqp2::tool {
namespace {

constexpr int kMostCodeTypes = 256; ///< numbers beyond have no name
constexpr const char* kStart = "CT_";

/// How the names of code types with that rate end: "_5994I".
std::string SuffixOf(const FrameRate& rate) {
    std::string suffix = "_";
    for (const wchar_t ch : std::wstring_view(rate.text)) {
        if (ch != L'.') {
            suffix += static_cast<char>(std::toupper(static_cast<int>(ch)));
        }
    }
    return suffix;
}

/// The name that was meant, whether or not its start was typed.
std::string NearCodeType(const std::string& text) {
    const std::vector<std::string> names = CodeTypeNames(CodeTypes::Any);
    const std::string near = NearName(text, names);
    return near.empty() ? NearName(kStart + text, names) : near;
}

} // namespace

std::vector<std::string> CodeTypeNames(CodeTypes which) {
    std::vector<std::string> names;
    for (int value = 0; value < kMostCodeTypes; ++value) {
        const std::string name = CodeTypeName(static_cast<eCodeType>(value));
        const bool isLeftOut = which == CodeTypes::Recorded && name.starts_with("CT_AVCHD_");
        if (!name.empty() && !isLeftOut) {
            names.push_back(name);
        }
    }
    return names;
}

std::string CodeTypeNote(CodeTypes which) {
    std::string note;
    for (const std::string& name : CodeTypeNames(which)) {
        note += (note.empty() ? "Code types: " : ", ") + name;
    }
    return note + ".";
}

eCodeType CodeTypeFromArgument(const std::string& text) {
    for (const std::string& name : {text, kStart + text}) {
        if (const auto known = CodeTypeFromName(TextFromBytes(name))) {
            return *known;
        }
    }
    const std::optional<std::int32_t> number = WholeNumber<std::int32_t>(text);
    if (!number) {
        const std::string near = NearCodeType(text);
        throw Failure("--code-type " + text, "is no code type",
                      near.empty() ? "give a name like CT_DV25_50I or a number"
                                   : fmt::format("did you mean {}?", near),
                      kUsage);
    }
    return static_cast<eCodeType>(*number);
}

const FrameRate* RateInName(eCodeType type) {
    const std::string_view name = CodeTypeName(type);
    const auto* const rate =
        std::find_if(kFrameRates.begin(), kFrameRates.end(),
                     [name](const FrameRate& each) { return name.ends_with(SuffixOf(each)); });
    return rate == kFrameRates.end() ? nullptr : rate;
}

} // namespace nqp2::tool
