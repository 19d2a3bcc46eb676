// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "platform/folder.h"
#include "platform/place.h"

#include <memory>
#include <optional>
#include <string>

/// Names and roots as they come in messages: foreign text that must not lead anywhere else.
namespace nqp2::worker {

/// Fails unless the text can be a clip's name: a plain file name that is not hidden and holds no
/// control character, with room for what is appended to it.
void CheckClipName(const CString& name);
/// The same for the name of another file.
void CheckFileName(const CString& name);

/// The folder that a root means, which need not exist. Fails unless it is absolute; a component
/// ".." fails too.
platform::Place RootOf(const CString& root);

/// A card that is written to, open.
struct CardFolders {
    CString written; ///< the path of its CONTENTS folder, for what is only read
    std::unique_ptr<platform::Folder> root;
    std::unique_ptr<platform::Folder> contents;
};

/// Opens a card's root, which may be a link, and the CONTENTS folder in it, which may not.
CardFolders OpenCard(const CString& root);

/// The CONTENTS folder below a root. Fails when there is none.
platform::Place FindContents(const CString& root);

/// The regular file on the disk that a path means; nothing when there is none.
std::optional<std::string> FindFile(const CString& path);

/// Text for messages to people.
std::string Shown(const CString& text);

} // namespace nqp2::worker
