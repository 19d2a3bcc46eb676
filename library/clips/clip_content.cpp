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
#include <array>
#include <string_view>

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

enum EssenceValue : std::size_t { kCodec, kVideoStart, kVideoSize, kIconFormat, kValues };
enum AudioCell : std::size_t { kAudioStart, kAudioSize, kAudioCells };

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

const dom::FieldSet& EssenceFields() {
    static const dom::FieldSet fields = [] {
        const std::array<dom::FieldSet::ValuePath, kValues> values = {
            {{media::Below(ClipPath::Codec)},
             {media::Below(ClipPath::VideoStartByteOffset)},
             {media::Below(ClipPath::VideoDataSize)},
             {media::kIconFormatPath}}};
        const std::array<std::string_view, kAudioCells> cells = {
            media::InAudio(ClipPath::AudioStartByteOffset),
            media::InAudio(ClipPath::AudioDataSize)};
        const dom::FieldSet::ListPath audio{media::kAudioPath, cells};
        return dom::FieldSet(media::kClipContentPath, values, {&audio, 1});
    }();
    return fields;
}

std::vector<ClipEssence> EssenceOf(const dom::FieldValues& values) {
    const auto textOf = [&](EssenceValue value) { return std::string(values.values[value].text); };
    const dom::FieldValues::List& audio = values.lists.front();
    return EssenceBy(values.values[kCodec].text, {textOf(kVideoStart), textOf(kVideoSize)},
                     audio.count, [&](std::size_t i) {
                         const auto cell = [&](AudioCell each) {
                             return std::string(audio.cells[i * kAudioCells + each].text);
                         };
                         return EssenceIndex{cell(kAudioStart), cell(kAudioSize)};
                     });
}

bool TellsIcon(const dom::Document& metadata) {
    const std::string path =
        std::string(media::kClipContentPath).append("/").append(media::kIconFormatPath);
    return !TextAt(metadata.Content()->DocumentNode(), path).empty();
}

bool TellsIcon(const dom::FieldValues& values) {
    return !values.values[kIconFormat].text.empty();
}

} // namespace nqp2::clips
