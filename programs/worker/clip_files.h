// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/failure.h"
#include "media/card_layout.h"
#include "NQP2ParserU/CString.h"
#include "platform/folder.h"
#include "platform/place.h"

#include <functional>
#include <span>
#include <string>
#include <vector>

/// Which files of clips a card or folder holds.
namespace nqp2::worker {

using media::ClipPart;
using media::kClipParts;

/// A file that bears a clip's name.
struct ClipFile {
    ClipPart part = ClipPart::Other;
    std::string folder; ///< the layout's name below CONTENTS: "VIDEO"
    std::string suffix; ///< what follows the clip's name: "00.MXF"
    std::string placed; ///< the folder as it is spelled on disk
    std::string name;   ///< and the file
    platform::EntryKind kind = platform::EntryKind::File;
};

/// A folder of a CONTENTS folder, as it is spelled and what it holds.
struct Listing {
    std::string placed;
    std::vector<platform::FolderEntry> entries;
};

/// Lists a folder of a CONTENTS folder. Empty when there is none; fails when it cannot be read to
/// its end, which would make a clip look smaller.
using ListFolder = std::function<Listing(const std::string& folder)>;
/// Of what is only read: links are followed.
ListFolder ListByPath(const platform::Place& contents);
/// Of what is written to: none is followed. Nothing is there when `contents` is null, which
/// outlives the answer otherwise.
ListFolder ListInFolder(platform::Folder* contents);

/// For each clip its files, the metadata last, in one go through the folders.
std::vector<std::vector<ClipFile>> FindClipFiles(const ListFolder& list,
                                                 std::span<const CString> clips);

/// The upper-case name of a clip for each file of one: the names that are taken.
std::vector<std::wstring> TakenNames(const ListFolder& list);

/// Whether the two are the same part of clips.
bool HaveSameRole(const ClipFile& left, const ClipFile& right);

/// The name of a clip's metadata file on disk.
std::string MetadataName(const CString& clip);

/// The failure of whatever wants a clip that the CONTENTS folder does not hold.
copy::Failure MissingClip(const std::string& contents, const CString& clipName);

} // namespace nqp2::worker
