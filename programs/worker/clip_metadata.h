// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "clips/clip_content.h"
#include "copy/failure.h"
#include "NQP2ParserU/CString.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Reading and changing what a clip's metadata file says about names.
namespace nqp2::worker {

/// New names of clips that are renamed together, by their old ones in upper case.
struct RenamedClip {
    CString newName;
    std::string identifier; ///< GlobalClipID as the clip's own metadata has it; may be empty
};
using RenamedClips = std::map<std::wstring, RenamedClip>;

/// Another clip as a relation names it.
struct NamedClip {
    CString name;
    std::string identifier; ///< may be empty
};

/// What a transfer has to know of a clip's metadata.
struct ClipFacts {
    std::string identifier; ///< GlobalClipID; may be empty
    std::vector<NamedClip> related;
    std::vector<clips::ClipEssence> essence;
};

/// Nothing when the bytes are not the metadata of a clip.
std::optional<ClipFacts> ReadFacts(std::string_view xml);

/// Whether two identifiers can be those of one clip: an empty one may be any.
bool MayBeSame(const std::string& left, const std::string& right);

/// The metadata with the clip's own name and its relations' names as they are now: `xml`, byte for
/// byte, when none of them changes. `path` is what a failure calls it.
std::string RenameInMetadata(std::string_view xml, const std::string& path, const CString& oldName,
                             const RenamedClips& renamed);

/// The failure of a file that is not the metadata of a clip.
copy::Failure NotMetadata(const std::string& path);

} // namespace nqp2::worker
