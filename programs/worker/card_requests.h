// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/messages.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/MediaHeaders.h"
#include "NQP2ParserU/NQP2BaseClipInfo.h"

#include <functional>
#include <string_view>

/// What a host asks of one card or file, beside transfers and recordings.
namespace nqp2::worker {

/// Removes a clip's files, the metadata file first: a clip that shows is whole. Goes on after a
/// file that cannot be removed and then fails with the first of them; metadata that stays keeps all
/// others too. Fails when there is no file of that name.
void DeleteClip(const CString& clipName, const CString& cardRoot);

/// Writes CONTENTS/ICON/clipName.BMP, in place of the icon that is there: a 24-bit bitmap of pixels
/// in blue, green, red, the bottom row first, rows not padded. Fails unless there are exactly as
/// many as the size says, and when the card does not hold that clip.
void WriteIcon(const CString& cardRoot, const CString& clipName, std::string_view pixels,
               const SIZE& size);

/// The serial number of the volume that holds a path: the device's own word, or for a user who may
/// not read it the system's device database, never a remembered number. Fails when neither tells,
/// and for a file system without a device (network mounts, memory).
CString FindVolumeSerial(const CString& path);

/// Describes a camera file, or a P2 clip by its metadata file, as docs/worker.md says. What `asked`
/// holds for name and date stays. A camera file is given up when `goesOn` returns false.
NQP2BaseClipInfo DescribeClip(const CString& path, const std::function<bool()>& goesOn,
                              NQP2BaseClipInfo asked);

/// All that a media file's container tells, as docs/worker.md says. Given up when `goesOn` returns
/// false.
bridge::MediaMessage DescribeMediaFile(const CString& path, const std::function<bool()>& goesOn);

} // namespace nqp2::worker
