// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/card_layout.h"
#include "NQP2ParserU/CString.h"

/// Where things lie on AVCHD cards, in terms of interface paths.
namespace nqp2::avchd {

inline constexpr const wchar_t* kAvchdFolder = media::kAvchd.BelowDrive();
inline constexpr const wchar_t* kBdmvFolder = media::kDisc.BelowDrive();
inline constexpr const wchar_t* kInformationFolder = media::kClipInformation.Path();
inline constexpr const wchar_t* kStreamFolder = media::kStreams.Path();
inline constexpr const wchar_t* kPlaylistFolder = media::kPlaylists.Path();

/// How one kind of card names its files.
struct ClipFiles {
    const wchar_t* informationExtension;
    const wchar_t* streamExtension;
    const wchar_t* playlistExtension;
    const wchar_t*
        timedAs; ///< what the debugger output calls the decoding of a clip; null: nothing
};

constexpr ClipFiles FilesNamed(const media::AvchdExtensions& names, const wchar_t* timedAs) {
    return {names.information.Text(), names.stream.Text(), names.playlist.Text(), timedAs};
}
inline constexpr ClipFiles kAvchdFiles =
    FilesNamed(media::kAvchdExtensions, L"NQGetAVCHDCPIMetaData");
inline constexpr ClipFiles kBdmvFiles = FilesNamed(media::kDiscExtensions, nullptr);

/// Whether a folder (interface path with its trailing separator) exists.
bool FolderExists(const CString& folder);

/// The folder of clips below a root, its drive closed: that of AVCHD when it holds clip information,
/// even none at all, else that of a disc.
CString ClipsFolder(const CString& root);

} // namespace nqp2::avchd
