// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CardFinder.h"
#include "NQP2ParserU/ClipMetadataRecords.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/FrameRate.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/RewrapEssence.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What the files of a clip hold, where that is not what was shot: 25 pictures a second carried in
/// 50, or in fields.
namespace nqp2::rewrap {

/// Whether the clip is one of a card, not a camera's file by itself.
bool IsOnCard(const _tag_P2Clip& clip, CardKind kind);

/// Pictures a second in the file; 0 when unknown.
FrameRate RateOfFile(const _tag_P2Clip& clip, const ClipMetadata& metadata);

/// Whether its pictures are coded as fields.
bool IsCodedInterlaced(const _tag_P2Clip& clip);

/// What the picture is made of; nothing where its coder's name does not tell.
std::optional<RewrapEssence> PictureEssence(const _tag_P2Clip& clip);
/// Whether each picture stands alone.
bool IsIntra(const _tag_P2Clip& clip);
/// What a track of sound is made of, by SoundTexts; nothing where that does not tell.
std::optional<RewrapEssence> SoundEssence(const std::string& text);

/// "16:9" as two numbers, which stay 0 for a text that is none.
void ReadAspect(const CString& text, std::uint32_t& width, std::uint32_t& height);

/// Each track of sound in words; `files` have one channel each, without any the metadata tell.
std::vector<std::string> SoundTexts(const _tag_P2Clip& clip, const ClipMetadata& metadata,
                                    int files);

} // namespace nqp2::rewrap
