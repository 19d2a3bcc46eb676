// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/NQP2BaseClipInfo.h"
#include "media/P2Clip.h"
#include "platform/CArray.h"
#include "platform/CString.h"

#include <functional>
#include <string>

namespace nqp2::avchd {

/// Asks for the description of a camera file by its interface path; the record comes with the name
/// and date text. Positive when the record was filled.
using BaseClipRequest = std::function<int(const CString& path, NQP2BaseClipInfo& info)>;

/// Why a file is no clip of the result; FolderUnreadable: why perhaps more of a folder's are none.
enum class Omission {
    Unreadable,
    TooLarge,
    Companion, ///< of a Mac: nothing is lost
    Undecodable,
    NotDescribed,
    FolderUnreadable,
};

/// Hears of each file that was left out, or of its folder where no path tells it; `why` is for a
/// person.
using OnOmitted =
    std::function<void(const CString& path, Omission omission, const std::string& why)>;

/// Appends the clips of a card or folder of cameras: clip information of AVCHD, camera files of two
/// makers, clip information of discs, each in the order of its folder. A file that cannot be read is
/// left out. False, with nothing appended, when the root is empty or holds none of the folders.
bool ScanClips(const CString& root, const BaseClipRequest& request, const OnOmitted& omitted,
               CArray<_tag_P2Clip>& clips);

} // namespace nqp2::avchd
