// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/clip_content.h"

#include "media/card_layout.h"
#include "media/element_paths.h"
#include "media/families.h"
#include "platform/number_text.h"
#include "platform/unicode.h"
#include "xml/dom/document.h"
#include "xml/dom/select.h"

#include <algorithm>

namespace nqp2::clips {
namespace {

using media::ClipPath;

/// More channels than files can be numbered for.
constexpr std::size_t kMostChannels = 101;

std::string TextAt(dom::Node& context, std::string_view path) {
    std::string scratch;
    const dom::Node* const node = dom::SelectFirst(context, path);
    return node != nullptr ? std::string(dom::Text(*node, scratch)) : std::string();
}

/// Nothing told, or nothing that can be, asks for a file with something in it.
std::uint64_t EndOfEssence(dom::Node& context, std::string_view start, std::string_view size) {
    const std::int64_t from =
        std::max<std::int64_t>(platform::ToInt64(std::string_view(TextAt(context, start))), 0);
    const std::int64_t bytes = platform::ToInt64(std::string_view(TextAt(context, size)));
    return bytes > 0 ? static_cast<std::uint64_t>(from) + static_cast<std::uint64_t>(bytes) : 1;
}

} // namespace

std::vector<ClipEssence> EssenceOf(const dom::Document& metadata) {
    dom::Node& document = metadata.Content()->DocumentNode();
    const std::string codec = TextAt(document, media::FullPath(ClipPath::Codec));
    const bool inOneFile =
        media::FamilyOfCodec(platform::TextFromUtf8(codec).View()) != media::CodecFamily::Other;
    const media::ClipFileKind& video = inOneFile ? media::kOneFileEssence : media::kVideoFiles;
    std::vector<ClipEssence> essence = {
        {video.folder.Bytes(), media::SuffixOf(video),
         EndOfEssence(document, media::FullPath(ClipPath::VideoStartByteOffset),
                      media::FullPath(ClipPath::VideoDataSize))}};
    const std::vector<dom::Node*> channels = dom::SelectAll(
        document, std::string(media::kClipContentPath).append("/").append(media::kAudioPath));
    for (std::size_t i = 0; i < std::min(channels.size(), kMostChannels); ++i) {
        const std::uint64_t end =
            EndOfEssence(*channels[i], media::InAudio(ClipPath::AudioStartByteOffset),
                         media::InAudio(ClipPath::AudioDataSize));
        if (inOneFile) {
            essence.front().size = std::max(essence.front().size, end);
        } else {
            essence.push_back(
                {media::kAudioFiles.folder.Bytes(), media::SuffixOf(media::kAudioFiles, i), end});
        }
    }
    return essence;
}

} // namespace nqp2::clips
