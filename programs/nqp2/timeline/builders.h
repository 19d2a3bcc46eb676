// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/timeline/model.h"
#include "nqp2/timeline/remarks.h"
#include "NQP2ParserU/CardFinder.h"
#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/ClipFiles.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/P2EDL.h"
#include "NQP2ParserU/ScanReport.h"

#include <functional>
#include <optional>
#include <string>

namespace nqp2::timeline {

/// Where the sound of a timeline comes from.
enum class SoundFrom {
    Files,   ///< the file of each channel
    Picture, ///< the picture's file, as programs tell it that know cards of this kind
    Nowhere,
};

struct BuildOptions {
    bool proxies = false; ///< shows small copies where there are some
    SoundFrom sound = SoundFrom::Files;
    bool memos = true;
    std::string start; ///< timecode of frame 0 in the place of the list's own
    bool dropFrame = false;
};

/// A card as it was scanned; belongs to the caller.
struct CardView {
    CString root;
    CardKind kind = CardKind::P2;
    const CArray<_tag_P2Clip>* clips = nullptr;
    const ScanReport* report = nullptr;
    ClipFileReader* files = nullptr;
    std::string name; ///< of a timeline of its clips
    /// The whole path of the system behind an interface path.
    std::function<std::string(const CString& path)> pathOf;
    /// Whether the card tells a clip's timecode.
    std::function<bool(const _tag_P2Clip& clip)> hasTimecode;
};

/// A list's events at their places, with gaps between them. Nothing, with a remark why, when it has
/// a rate that no camera has.
std::optional<Timeline> FromEditList(const CardView& card, const tag_P2EDL& edit,
                                     const BuildOptions& options, Remarks& remarks);
/// A playlist's clips, one after the other, each at its own rate.
Timeline FromPlaylist(const CardView& card, const tag_P2EDL& playlist, const BuildOptions& options,
                      Remarks& remarks);
/// All clips of a card by their names, those of a recording one after the other.
Timeline FromClips(const CardView& card, const BuildOptions& options, Remarks& remarks);

/// The frame of a timecode that a user gave; nothing for a text that is none. With ";" before its
/// last field it counts in drop frame.
std::optional<std::int64_t> FrameOfText(const std::string& text, const FrameRate& rate,
                                        bool dropFrame);

} // namespace nqp2::timeline
