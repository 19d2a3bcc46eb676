// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Rewrap.h"

#include <cstdint>
#include <string>
#include <vector>

/// One playable file of the parts of a recording: docs/worker.md.
namespace nqp2::worker::rewrap {

/// A part whose files are there.
struct Part {
    std::string name; ///< for messages
    std::string video;
    std::vector<std::string> sounds;
    std::uint32_t first = 0;
    std::uint32_t frames = 0;
    std::uint32_t promised = 0;
};

struct Chapter {
    std::uint32_t frame = 0;
    std::string text;
};

/// A request that has been found to be within all bounds. Texts hold no control characters.
struct Request {
    CString folder;
    std::string file; ///< its name in the folder
    RewrapContainer container = RewrapContainer::Mov;
    RewrapJoin join = RewrapJoin::Frames;
    bool oneTrack = false;
    std::string codec;
    FrameRate rate; ///< 0 frames: unknown
    bool interlaced = false;
    std::int32_t aspectWidth = 0;
    std::int32_t aspectHeight = 0;
    std::string timecode;
    std::string title;
    std::string reel;
    std::string date;
    std::vector<Part> parts;
    std::vector<Chapter> chapters; ///< in order, no two at one frame
};

/// Throws a Failure for what is beyond them and for files that are not there.
Request Checked(const RewrapRequest& asked);

/// Fails unless it is "" or the time of a frame at that rate: a number that drop frame leaves out
/// is none.
void CheckTimecode(const std::string& text, const FrameRate& rate);

} // namespace nqp2::worker::rewrap
