// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/card_layout.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/P2Clip.h"
#include "platform/place.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace nqp2::clips {

/// Tells which of a clip's files are on the card.
class EssenceLookup {
public:
    enum class Mode {
        OneClip, ///< asks the file system for each file
        Scan,    ///< reads each folder once and answers from its names
    };
    EssenceLookup(platform::Place contents, Mode mode);

    // The kind is one of media::kClipFileKinds.

    [[nodiscard]] const platform::Place& FolderOf(const media::ClipFileKind& kind) const;
    /// Whether a file is there; its name is given in bytes.
    [[nodiscard]] bool Has(const media::ClipFileKind& kind, const std::string& name) const;
    /// The folders in which all files that were asked for, or that the scan has come from, are
    /// under the very names that records give them.
    [[nodiscard]] std::vector<CString> ExactFolders() const;

private:
    struct Answers {
        bool areThere = false;
        bool areExact = true;
    };
    static std::size_t IndexOf(const media::ClipFileKind& kind) {
        return static_cast<std::size_t>(&kind - media::kClipFileKinds.data());
    }

    platform::Place m_contents;
    Mode m_mode;
    mutable std::array<Answers, media::kClipFileKinds.size()> m_answers;
    /// Made when first asked for.
    mutable std::array<std::optional<platform::Place>, media::kClipFileKinds.size()> m_folders;
};

// What both readers of clips look for under the record's ClipName: companions, and the essence with
// its mask, of which bit 0 is the video and bit n the audio channel n-1. XmlPath comes as the file
// that has just been read, or empty.

/// Every path is checked, four audio channels.
void FindNamedFiles(const EssenceLookup& essence, _tag_P2Clip& clip);
/// One file for the families that keep video and audio together. For all other codecs the essence
/// is taken for granted, and the last channel gets no path: kept, hosts rely on it.
void FindScannedFiles(const EssenceLookup& essence, bool inOneFile, int channels,
                      _tag_P2Clip& clip);

} // namespace nqp2::clips
