// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/CString.h"
#include "worker/outcome.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

/// Which files belong to a clip.
namespace nqp2::worker {

enum class ClipPart { Video, Audio, Other, Metadata };
inline constexpr std::size_t kClipParts = 4;

struct ClipFile {
    ClipPart part = ClipPart::Other;
    std::string folder; ///< the layout's name below CONTENTS: "VIDEO"
    std::string suffix; ///< what follows the clip's name: "00.MXF"
    std::string path;   ///< the file as it stands on disk
    std::uint64_t size = 0;
};

/// The files of a clip below a CONTENTS folder, its metadata file last. Empty when there are none.
/// Fails when a folder or file cannot be looked at.
Outcome FindClipFiles(const std::string& contents, const CString& clipName,
                      std::vector<ClipFile>& files);

/// The failure of whatever wants a clip that the CONTENTS folder does not hold.
Outcome MissingClip(const std::string& contents, const CString& clipName);

/// The files of a clip as FindClipFiles gives them, for a name that may be none. Fails when the clip
/// has no metadata file.
Outcome CollectClip(const std::string& contents, const CString& clipName,
                    std::vector<ClipFile>& files);

/// The folders below CONTENTS that hold files of clips.
std::vector<std::string> ClipFolders();

/// Fails when a CONTENTS folder or one of those is a link: nothing is written or removed through it,
/// for it may lead anywhere.
Outcome CheckFoldersAreNoLinks(const std::string& contents);

/// The upper-case name of a clip for each file of a clip that stands below a CONTENTS folder: the
/// names that are taken there.
Outcome TakenNames(const std::string& contents, std::vector<std::wstring>& names);

} // namespace nqp2::worker
