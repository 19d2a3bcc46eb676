// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

#include <cstdint>

namespace nqp2 {

/// What a file is to its clip.
enum class ClipFileRole : std::int32_t {
    Video,    ///< with the sound in it, for clips that keep both in one file
    Audio,    ///< one channel
    Metadata, ///< the file that describes the clip
    Icon,     ///< its small picture
    Proxy,    ///< its small copy
    Voice,    ///< of a memo
    Other,    ///< anything else under the clip's name
};

/// What the medium has of a file, beside what the metadata promise.
enum class ClipFileState : std::int32_t {
    Present, ///< and as long as promised
    Missing, ///< promised, but not there
    Empty,   ///< no bytes, where the metadata promise some
    Short,   ///< fewer bytes than the metadata promise
};

/// A file of a clip as it is on the medium.
struct ClipFile {
    ClipFileRole role = ClipFileRole::Other; ///< by folder and name
    std::int32_t number = 0;                 ///< of the audio channel or voice memo, from 0
    CString path;                            ///< interface path, in the letters of the medium
    std::uint64_t size = 0;                  ///< bytes
    std::uint64_t promisedSize = 0; ///< where its essence ends by the metadata; 0 when not told
    ClipFileState state = ClipFileState::Present; ///< beside what was promised
};

/// What something on the card is that belongs to none of its clips.
enum class LooseKind : std::int32_t {
    File,
    Link,    ///< to a file or folder, or to nothing; it is not followed
    Special, ///< a pipe, a socket, a device
};

/// Something on the card that belongs to none of its clips and is no folder.
struct LooseFile {
    CString path;                     ///< interface path
    std::uint64_t size = 0;           ///< bytes of a file
    LooseKind kind = LooseKind::File; ///< what it is
};

} // namespace nqp2
