// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/card_layout.h"
#include "xml/dom/field_reader.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace nqp2::dom {
class Document;
} // namespace nqp2::dom

/// Which files a clip has by its metadata, and how large its essence is.
namespace nqp2::clips {

/// A file that a clip's metadata tell of.
struct ClipEssence {
    const media::ClipFileKind* kind;
    std::size_t number = 0; ///< of the audio channel or recording
    /// It has so many bytes or more: where its essence ends, if that is told.
    std::uint64_t size = 1;
    CString voiceFormat = {}; ///< "WAV", or "", of a memo's recording

    [[nodiscard]] const char* Folder() const { return kind->folder.Bytes(); }
    /// What follows the clip's name: "00.MXF".
    [[nodiscard]] std::string Suffix() const { return media::SuffixOf(*kind, number); }
};

/// The essence of the clip whose metadata the document holds: the video, with the sound in it for
/// the families that keep both in one file, else a file for each audio channel as well.
std::vector<ClipEssence> EssenceOf(const dom::Document& metadata);

/// The essence, the icon when the metadata describe one, and the recordings of memos.
std::vector<ClipEssence> PromisesOf(const dom::Document& metadata);
/// Appends the same by the values of ClipAndFileFields.
void AppendPromises(const dom::FieldValues& values, std::vector<ClipEssence>& promises);

/// The name of a recording: "0001AB00.WAV".
CString VoiceFileOf(const CString& clip, std::size_t number, const CString& format);

} // namespace nqp2::clips
