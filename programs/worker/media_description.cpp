// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/card_requests.h"

#include "copy/failure.h"
#include "media/rates.h"
#include "media/track_texts.h"
#include "platform/unicode.h"
#include "worker/base/card_folder.h"
#include "worker/base/media_file.h"

namespace nqp2::worker {
namespace {

using platform::TextFromUtf8;

CString FormatText(const MediaTrack& track) {
    const bool hasRate = track.rate.frames > 0 && track.rate.seconds > 0;
    const FrameRate* const rate = hasRate ? media::FindRate(track.rate, track.interlaced) : nullptr;
    return track.channels > 0 || track.hertz > 0
               ? media::SoundText(track.channels, track.hertz)
               : media::PictureText(track.width, track.height, rate);
}

} // namespace

bridge::MediaMessage DescribeMediaFile(const CString& path, const std::function<bool()>& goesOn) {
    const std::string file = FindFile(path).value_or("");
    if (!file.starts_with('/')) {
        throw copy::Failure("There is no file " + Shown(path) + ".");
    }
    const MediaDescription description = ReadMediaDescription(file, goesOn);
    bridge::MediaMessage message;
    for (const MediaTrack& track : description.tracks) {
        message.tracks.Add({TextFromUtf8(track.kind), TextFromUtf8(track.codec),
                            TextFromUtf8(track.language), FormatText(track)});
    }
    for (const MediaText& text : description.texts) {
        message.texts.Add({TextFromUtf8(text.path), TextFromUtf8(text.text)});
    }
    message.isCut = description.isCut ? 1 : 0;
    return message;
}

} // namespace nqp2::worker
