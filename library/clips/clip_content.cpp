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
#include <span>
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
enum ContentList : std::size_t { kAudio, kMemos };

/// Of recordings whose memos do not tell.
constexpr const wchar_t* kUsualVoiceFormat = L"WAV";

/// A memo with any of these has a recording, and the first tells its format.
constexpr std::array kVoiceNames = {media::MemoName::VoiceFormat,
                                    media::MemoName::VoiceBitsPerSample,
                                    media::MemoName::VoiceSamplingRate};

constexpr std::string_view NameOf(media::MemoName name) {
    return media::kMemoNames[static_cast<std::size_t>(name)];
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
        std::array<std::string_view, kVoiceNames.size()> voices;
        std::transform(kVoiceNames.begin(), kVoiceNames.end(), voices.begin(), NameOf);
        const std::array<dom::FieldSet::ListPath, 2> lists = {
            {{media::kAudioPath, cells}, {media::kMemoPath, voices}}};
        return dom::FieldSet(media::kClipContentPath, values, lists);
    }();
    return fields;
}

std::vector<ClipEssence> EssenceOf(const dom::FieldValues& values) {
    const auto textOf = [&](EssenceValue value) { return std::string(values.values[value].text); };
    const dom::FieldValues::List& audio = values.lists[kAudio];
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

std::vector<CString> VoicesOf(const dom::Document& metadata) {
    std::vector<CString> voices;
    const std::string path =
        std::string(media::kClipContentPath).append("/").append(media::kMemoPath);
    for (dom::Node* const memo : dom::SelectAll(metadata.Content()->DocumentNode(), path)) {
        if (std::any_of(kVoiceNames.begin(), kVoiceNames.end(), [&](media::MemoName name) {
                return dom::SelectFirst(*memo, NameOf(name)) != nullptr;
            })) {
            voices.push_back(platform::TextFromUtf8(TextAt(*memo, NameOf(kVoiceNames.front()))));
        }
    }
    return voices;
}

std::vector<CString> VoicesOf(const dom::FieldValues& values) {
    std::vector<CString> voices;
    const dom::FieldValues::List& memos = values.lists[kMemos];
    for (std::size_t i = 0; i < memos.count; ++i) {
        const auto cells =
            std::span(memos.cells).subspan(i * kVoiceNames.size(), kVoiceNames.size());
        if (std::any_of(cells.begin(), cells.end(),
                        [](const auto& each) { return each.isThere; })) {
            voices.push_back(platform::TextFromUtf8(cells.front().text));
        }
    }
    return voices;
}

CString VoiceFileOf(const CString& clip, std::size_t number, const CString& format) {
    const bool isTold = !format.IsEmpty() && media::IsPlainName(format);
    return media::FileNameOf(media::kVoiceFiles, clip, number) + L"." +
           (isTold ? format : CString(kUsualVoiceFormat));
}

} // namespace nqp2::clips
