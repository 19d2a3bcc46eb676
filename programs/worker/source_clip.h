// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/transaction.h"
#include "worker/clip_files.h"
#include "worker/clip_metadata.h"

namespace nqp2::worker {

/// A file of a clip that is to be copied.
struct SourceFile : ClipFile {
    std::string path;
    platform::FileInfo info;
};

/// A clip that is to be copied.
struct SourceClip {
    CString name;
    std::vector<SourceFile> files; ///< the metadata last
    std::string xml;
    ClipFacts facts;
    std::vector<std::string> lacks; ///< sentences about what is not whole
};

/// Reads what a CONTENTS folder holds of the clips. Fails for a name that is none, a clip without
/// metadata, and one that is not whole: whose metadata cannot be read, or whose essence is missing,
/// empty or shorter than they tell. With `incomplete` that is no failure.
std::vector<SourceClip> ReadSourceClips(const platform::Place& contents,
                                        std::span<const CString> names, bool incomplete);

/// What a transfer that was asked to take such clips all the same tells of them; "" for whole ones.
std::string Lacks(const std::vector<SourceClip>& clips);

/// The copy of a clip's file below a root, under the name that it has, or under that of another
/// clip.
copy::Item ItemFor(const SourceFile& file, const std::string& otherClip = {});

} // namespace nqp2::worker
