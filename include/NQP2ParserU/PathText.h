// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"

#include <string>
#include <string_view>

namespace nqp2 {

/// The POSIX path (UTF-8 or the raw bytes of the file's name) behind an interface path.
/// A drive part is what comes before the first ":" that is followed by "\" or ends the text: a
/// single letter is looked up in the drive table, anything else is a POSIX folder itself, taken as
/// it is. Behind it "\" becomes "/". Empty when a drive letter is not mapped, when the drive
/// part is empty and when the path holds a zero element; the empty path is never found.
NQP2_API std::string PosixPath(const CString& path);

/// The interface form of a POSIX path: the folder followed by ":", ready for "\CONTENTS\".
/// Keeps the bytes: PosixPath of the result names the same folder. Trailing separators go; a
/// relative folder of one letter gets "./" so that it is not taken for a drive. Empty for the few
/// folders that the interface's form cannot say: the empty one and those whose path holds ":\".
NQP2_API CString InterfaceRoot(std::string_view folder);

} // namespace nqp2
