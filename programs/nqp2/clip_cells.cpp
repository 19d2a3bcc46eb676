// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_cells.h"

#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <bit>

namespace nqp2::tool {

std::string OwnTitle(const _tag_P2Clip& clip) {
    const bool generated = clip.UserClipName.CompareNoCase(clip.ClipName) == 0 ||
                           clip.UserClipName.CompareNoCase(clip.GlobalClipID) == 0;
    return generated ? "" : BytesFromText(clip.UserClipName);
}

std::string CodecAndClass(const _tag_P2Clip& clip) {
    const bool named = clip.CodecName.Find(L"-" + clip.CodecClass + L"M") >= 0;
    const std::string codec = BytesFromText(clip.CodecName);
    return clip.CodecClass.IsEmpty() || named
               ? codec
               : fmt::format("{} {}", codec, BytesFromText(clip.CodecClass));
}

int AudioChannels(const _tag_P2Clip& clip) {
    const int paths = std::popcount(clip.EssenceMask >> 1U);
    const bool ownFiles = !(clip.AudioPath[0] == clip.VideoPath);
    const int unnamed = ownFiles && !clip.AudioBitsPerSample.IsEmpty() ? 1 : 0;
    return paths + unnamed;
}

} // namespace nqp2::tool
