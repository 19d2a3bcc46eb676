// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/P2Clip.h"

#include <cstdint>
#include <memory>

namespace nqp2 {

/// What a file is to its clip.
enum class ClipFileRole : std::int32_t {
    Video, ///< with the sound in it, for clips that keep both in one file
    Audio, ///< one channel
    Metadata,
    Icon,
    Proxy,
    Voice, ///< of a memo
    Other, ///< anything else under the clip's name
};

enum class ClipFileState : std::int32_t {
    Present,
    Missing,
    Empty, ///< no bytes, where the metadata promise some
    Short, ///< fewer bytes than the metadata promise
};

/// A file of a clip as it is on the medium.
struct ClipFile {
    ClipFileRole role = ClipFileRole::Other;
    std::int32_t number = 0; ///< of the audio channel or voice memo, from 0
    CString path;            ///< interface path, in the letters of the medium
    std::uint64_t size = 0;  ///< bytes
    std::uint64_t promisedSize = 0; ///< where its essence ends by the metadata; 0 when not told
    ClipFileState state = ClipFileState::Present;
};

/// A file of the card that belongs to none of its clips.
struct LooseFile {
    CString path; ///< interface path
    std::uint64_t size = 0;
};

/// Tells the files of a card's clips. It asks the medium: each folder is listed once, each file
/// asked for once. Not for several threads at a time.
class NQP2_API ClipFileReader {
public:
    /// For the card at an interface path, as a scan takes it.
    explicit ClipFileReader(const CString& root);
    ~ClipFileReader();
    ClipFileReader(const ClipFileReader&) = delete;
    ClipFileReader& operator=(const ClipFileReader&) = delete;

    /// All files that the clip has, and all that its metadata promise: every channel too that its
    /// record leaves out. False, with no files, when there is no memory.
    bool Read(const _tag_P2Clip& clip, CArray<ClipFile>& files) noexcept;

    /// The files of the card that no Read has given, sorted by path.
    bool LooseFiles(CArray<LooseFile>& files) noexcept;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// Whether every file that the metadata promise is there and long enough.
NQP2_API bool IsWhole(const CArray<ClipFile>& files) noexcept;

} // namespace nqp2
