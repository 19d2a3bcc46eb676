// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace nqp2::dom {
class Document;
} // namespace nqp2::dom

/// Which files a clip has by its metadata, and how large its essence is.
namespace nqp2::clips {

/// A file of picture or sound that a clip's metadata tell of.
struct ClipEssence {
    const char* folder; ///< as in the kind of file
    std::string suffix; ///< what follows the clip's name: "00.MXF"
    std::uint64_t size =
        1; ///< it has so many bytes or more: where its essence ends, if that is told
};

/// The essence of the clip whose metadata the document holds: the video, with the sound in it for
/// the families that keep both in one file, else a file for each audio channel as well.
std::vector<ClipEssence> EssenceOf(const dom::Document& metadata);

} // namespace nqp2::clips
