// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "platform/folder_index.h"

#include <map>
#include <string>

namespace nqp2::clips {

/// Tells which of a clip's files are on the card.
class EssenceLookup {
public:
    enum class Mode {
        OneClip, ///< asks the file system for each file
        Scan,    ///< reads each folder once and answers from its names
    };
    /// `contents` is the card's contents folder with its trailing separator.
    EssenceLookup(CString contents, Mode mode);

    [[nodiscard]] const CString& Contents() const { return m_contents; }
    /// contents + folder + name when that file exists, else "". `folder` ends with "\". A name
    /// that is no plain file name is never looked for.
    CString PathIfExists(const wchar_t* folder, const CString& name);

private:
    bool Exists(const wchar_t* folder, const CString& name);

    CString m_contents;
    Mode m_mode;
    std::map<std::wstring, platform::FolderIndex> m_folders;
};

} // namespace nqp2::clips
