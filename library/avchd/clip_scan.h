// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/NQP2BaseClipInfo.h"
#include "NQP2ParserU/P2Clip.h"
#include "platform/io_status.h"

#include <cstdint>
#include <exception>
#include <functional>
#include <new>
#include <string>
#include <vector>

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

/// Is told of each file that was left out, or of its folder where no path tells it; `why` is for a
/// person.
using OnOmitted =
    std::function<void(const CString& path, Omission omission, const std::string& why)>;

/// Why a file that could not be read is left out.
Omission OmissionOf(const platform::IoStatus& status);

/// Tells that an exception leaves a file out. Throws nothing itself.
void OmitThrown(const CString& path, const OnOmitted& omitted, const char* why) noexcept;

/// Does one file's share of a scan. What it throws, as when memory gives out, leaves that file out
/// and no other.
template <class Share>
void TakeAlone(const CString& path, const OnOmitted& omitted, Share&& share) noexcept {
    try {
        share();
    } catch (const std::bad_alloc&) {
        OmitThrown(path, omitted, "it takes more memory than there is");
    } catch (const std::exception& error) {
        OmitThrown(path, omitted, error.what());
    }
}

/// A recording that the camera split into several clips.
struct SplitRecording {
    static constexpr std::int64_t kMissing = -1;

    struct Segment {
        CString clipName;
        std::int64_t clip = kMissing; ///< index among the scan's clips
    };
    std::vector<Segment> segments; ///< in their order; one at least is there
};

/// What a scan appends to.
struct ScanResult {
    CArray<_tag_P2Clip>& clips;
    std::vector<SplitRecording>& splits; ///< as the card's playlists tell
};

/// Appends the clips of a card or folder of cameras: clip information of AVCHD, camera files of two
/// makers, clip information of discs, each in the order of its folder. A file that cannot be read is
/// left out. False, with nothing appended, when the root is empty or holds none of the folders.
bool ScanClips(const CString& root, const BaseClipRequest& request, const OnOmitted& omitted,
               ScanResult result);

} // namespace nqp2::avchd
