// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/clip_content.h"

#include "clips/clip_texts.h"
#include "media/card_layout.h"
#include "media/element_paths.h"
#include "media/families.h"
#include "platform/number_text.h"
#include "platform/unicode.h"
#include "xml/dom/document.h"
#include "xml/dom/select.h"

#include <algorithm>
#include <string_view>

namespace nqp2::clips {
namespace {

/// More channels than files can be numbered for.
constexpr std::size_t kMostChannels = 101;

std::string TextAt(dom::Node& context, std::string_view path) {
    std::string scratch;
    const dom::Node* const node = dom::SelectFirst(context, path);
    return node != nullptr ? std::string(dom::Text(*node, scratch)) : std::string();
}

/// Where an essence lies in its file.
struct EssenceIndex {
    std::string start;
    std::string size;
};

/// Nothing told, or nothing that can be, asks for a file with something in it.
std::uint64_t EndOf(const EssenceIndex& index) {
    const std::int64_t from =
        std::max<std::int64_t>(platform::ToInt64(std::string_view(index.start)), 0);
    const std::int64_t bytes = platform::ToInt64(std::string_view(index.size));
    return bytes > 0 ? static_cast<std::uint64_t>(from) + static_cast<std::uint64_t>(bytes) : 1;
}

/// The rule. `channel` gives the index of one of so many channels.
template <class Channel>
std::vector<ClipEssence> EssenceBy(std::string_view codec, const EssenceIndex& video,
                                   std::size_t channels, const Channel& channel) {
    const bool inOneFile =
        media::FamilyOfCodec(platform::TextFromUtf8(codec).View()) != media::CodecFamily::Other;
    std::vector<ClipEssence> essence = {
        {inOneFile ? &media::kOneFileEssence : &media::kVideoFiles, 0, EndOf(video)}};
    for (std::size_t i = 0; i < std::min(channels, kMostChannels); ++i) {
        const std::uint64_t end = EndOf(channel(i));
        if (inOneFile) {
            essence.front().size = std::max(essence.front().size, end);
        } else {
            essence.push_back({&media::kAudioFiles, i, end});
        }
    }
    return essence;
}

std::vector<ClipEssence> WithIcon(std::vector<ClipEssence> promises, bool hasIcon) {
    if (hasIcon) {
        promises.push_back({&media::kIconFiles});
    }
    return promises;
}

} // namespace

std::vector<ClipEssence> EssenceOf(const dom::Document& metadata) {
    dom::Node& document = metadata.Content()->DocumentNode();
    const auto textOf = [&](ClipPath path) { return TextAt(document, media::FullPath(path)); };
    const std::vector<dom::Node*> channels = dom::SelectAll(
        document, std::string(media::kClipContentPath).append("/").append(media::kAudioPath));
    return EssenceBy(textOf(ClipPath::Codec),
                     {textOf(ClipPath::VideoStartByteOffset), textOf(ClipPath::VideoDataSize)},
                     channels.size(), [&](std::size_t i) {
                         const auto inAudio = [&](ClipPath path) {
                             return TextAt(*channels[i], media::InAudio(path));
                         };
                         return EssenceIndex{inAudio(ClipPath::AudioStartByteOffset),
                                             inAudio(ClipPath::AudioDataSize)};
                     });
}

std::vector<ClipEssence> PromisesOf(const dom::Document& metadata) {
    const std::string icon =
        std::string(media::kClipContentPath).append("/").append(media::kIconFormatPath);
    return WithIcon(EssenceOf(metadata), !TextAt(metadata.Content()->DocumentNode(), icon).empty());
}

std::vector<ClipEssence> PromisesOf(const dom::FieldValues& values) {
    const auto textOf = [&](ClipPath path) {
        return values.values[static_cast<std::size_t>(path)].text;
    };
    const dom::FieldValues::List& audio = values.lists[static_cast<std::size_t>(ClipList::Audio)];
    const auto channel = [&](std::size_t i) {
        const auto cell = [&](AudioCell each) {
            constexpr auto kCells = static_cast<std::size_t>(AudioCell::Count);
            return std::string(audio.cells[i * kCells + static_cast<std::size_t>(each)].text);
        };
        return EssenceIndex{cell(AudioCell::StartByteOffset), cell(AudioCell::DataSize)};
    };
    const EssenceIndex video{std::string(textOf(ClipPath::VideoStartByteOffset)),
                             std::string(textOf(ClipPath::VideoDataSize))};
    return WithIcon(EssenceBy(textOf(ClipPath::Codec), video, audio.count, channel),
                    !values.values[kIconFormat].text.empty());
}

} // namespace nqp2::clips
