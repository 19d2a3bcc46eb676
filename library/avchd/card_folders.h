// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

/// Where things lie on AVCHD cards and in camera folders.
namespace nqp2::avchd {

inline constexpr const wchar_t* kAvchdFolder = L"\\AVCHD\\BDMV\\";
inline constexpr const wchar_t* kBdmvFolder = L"\\BDMV\\";
inline constexpr const wchar_t* kInformationFolder = L"CLIPINF\\";
inline constexpr const wchar_t* kStreamFolder = L"STREAM\\";
inline constexpr const wchar_t* kPlaylistFolder = L"PLAYLIST\\";

inline constexpr const wchar_t* kSonyFolder = L"\\SONY\\";
inline constexpr const wchar_t* kSonyFiles = L"\\SONY\\DVF\\100DVF\\";
inline constexpr const wchar_t* kSonyPattern = L"*.AVI";
/// In the order in which they are asked for; only the first that exists counts.
inline constexpr const wchar_t* kPanasonicFolders[] = {L"\\PANA_GRP\\001RBQAM\\",
                                                       L"\\PANA_GRP\\001YDJAM\\"};
inline constexpr const wchar_t* kPanasonicPattern = L"*.MOV";

/// How one kind of card names its files.
struct ClipFiles {
    const wchar_t* informationExtension;
    const wchar_t* streamExtension;
    const wchar_t* playlistExtension;
    const wchar_t*
        timedAs; ///< what the debugger output calls the decoding of a clip; null: nothing
};
inline constexpr ClipFiles kAvchdFiles = {L".CPI", L".MTS", L".MPL", L"NQGetAVCHDCPIMetaData"};
inline constexpr ClipFiles kBdmvFiles = {L".clpi", L".m2ts", L".mpls", nullptr};

} // namespace nqp2::avchd
