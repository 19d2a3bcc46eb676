// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/CString.h"
#include "worker/outcome.h"

#include <map>
#include <string>
#include <string_view>

/// Reading and changing what a clip's metadata file says about names.
namespace nqp2::worker {

/// New names of clips that are renamed together, by their old ones in upper case.
struct RenamedClip {
    CString newName;
    std::string identifier; ///< GlobalClipID as the clip's own metadata has it; may be empty
};
using RenamedClips = std::map<std::wstring, RenamedClip>;

/// The GlobalClipID of a metadata file; empty when it has none. Fails when it is no clip's.
Outcome ReadIdentifier(std::string_view xml, const std::string& path, std::string& identifier);

/// The metadata with the clip's own name and its relations' names as they are now. `changed` tells
/// whether anything had to be; else `rewritten` is `xml`, byte for byte.
Outcome RenameInMetadata(std::string_view xml, const std::string& path, const CString& oldName,
                         const RenamedClips& renamed, std::string& rewritten, bool& changed);

} // namespace nqp2::worker
