// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/ClipFileRecords.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/P2Clip.h"

#include <memory>

class CNQP2Parser;

namespace nqp2 {

namespace clips {
class ClipPromises;
} // namespace clips

/// Tells the files of a card's clips. It asks the medium: each folder is listed once, each file
/// asked for once, and the metadata are read for what they promise, unless a scan has told it:
/// ScanReport::files. Not for several threads at a time.
class NQP2_API ClipFileReader {
public:
    /// For the card at an interface path, as a scan takes it.
    explicit ClipFileReader(const CString& root) noexcept;
    ~ClipFileReader();
    ClipFileReader(const ClipFileReader&) = delete;
    ClipFileReader& operator=(const ClipFileReader&) = delete;

    /// All files that the clip has, and all that its metadata promise: every channel too that its
    /// record leaves out. False, with no files, when there is no memory.
    bool Read(const _tag_P2Clip& clip, CArray<ClipFile>& files) noexcept;

    /// What is on the card and no Read has given, sorted by path; links are not followed. False
    /// when memory is short, a folder cannot be read, or there is more than is looked at: `files`
    /// has what was found.
    bool LooseFiles(CArray<LooseFile>& files) noexcept;
    /// The same below a folder (interface path) above the card: the top of a memory card whose
    /// PRIVATE folder the card is.
    bool LooseFiles(CArray<LooseFile>& files, const CString& top) noexcept;

private:
    friend class ::CNQP2Parser;
    clips::ClipPromises* Promises() noexcept; ///< null when there was no memory

    struct State;
    std::unique_ptr<State> m_state; ///< null when there was no memory for it
};

/// Whether picture, sound and metadata are there and long enough; a clip can do without the rest.
NQP2_API bool IsWhole(const CArray<ClipFile>& files) noexcept;

} // namespace nqp2
