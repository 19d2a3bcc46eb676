// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::dom {
class Document;
} // namespace nqp2::dom

/// Which files a clip has, and how large its essence is: the one place that knows.
namespace nqp2::clips {

enum class ClipPart { Video, Audio, Other, Metadata };
inline constexpr std::size_t kClipParts = 4;

/// How a folder below CONTENTS names a clip's files: after the clip, a number of so many digits and
/// the extension.
struct ClipFileRule {
    const char* folder;
    ClipPart part;
    std::size_t digits;
    std::wstring_view extension; ///< in upper case; "": any
};

/// Each folder that holds files of clips; the metadata's is the last, for without it no clip shows.
std::span<const ClipFileRule> ClipFileRules();

/// What of a file name in upper case stands before number and extension: the clip's name. Empty
/// when the name does not follow the rule.
std::wstring_view ClipNameIn(std::wstring_view file, const ClipFileRule& rule);

/// A file of picture or sound that a clip's metadata tell of.
struct ClipEssence {
    const char* folder; ///< as in the rule
    std::string suffix; ///< what follows the clip's name: "00.MXF"
    std::uint64_t size =
        1; ///< it has so many bytes or more: where its essence ends, if that is told
};

/// The essence of the clip whose metadata the document holds: the video, with the sound in it for
/// the families that keep both in one file, else a file for each audio channel as well.
std::vector<ClipEssence> EssenceOf(const dom::Document& metadata);

} // namespace nqp2::clips
