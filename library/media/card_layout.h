// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

/// Where things lie on a P2 card.
namespace nqp2::media {

/// The root with a drive part: ":" is appended when the text holds none ("E" becomes "E:").
CString WithDrive(const CString& root);

/// root + "\CONTENTS\".
CString ContentsFolder(const CString& root);

inline constexpr const wchar_t* kClipFolder = L"CLIP\\";
inline constexpr const wchar_t* kVideoFolder = L"VIDEO\\";
inline constexpr const wchar_t* kAudioFolder = L"AUDIO\\";
inline constexpr const wchar_t* kIconFolder = L"ICON\\";
inline constexpr const wchar_t* kProxyFolder = L"PROXY\\";
inline constexpr const wchar_t* kAvClipFolder = L"AVCLIP\\";

inline constexpr const wchar_t* kXmlExtension = L".XML";
inline constexpr const wchar_t* kEssenceExtension = L".MXF";
inline constexpr const wchar_t* kIconExtension = L".BMP";
inline constexpr const wchar_t* kMp4Extension = L".MP4";
inline constexpr const wchar_t* kMovExtension = L".MOV";

/// Whether a name taken from a file is one plain file name: no separators, no drive, no zero, and
/// no longer than file names can be.
bool IsPlainName(const CString& name);

/// Whether an interface path is that of a file which a Mac leaves beside each copied file.
bool IsCompanion(const CString& path);

} // namespace nqp2::media
