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
#include <array>
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

/// Where an essence ends in its file. Nothing told, or nothing that can be, asks for a file with
/// something in it.
std::uint64_t EndOf(std::string_view start, std::string_view size) {
    const std::int64_t from = std::max<std::int64_t>(platform::ToInt64(start), 0);
    const std::int64_t bytes = platform::ToInt64(size);
    return bytes > 0 ? static_cast<std::uint64_t>(from) + static_cast<std::uint64_t>(bytes) : 1;
}

/// The rule. `endOf` gives the end of one of so many channels.
template <class ChannelEnd>
void AppendEssence(std::string_view codec, std::uint64_t videoEnd, std::size_t channels,
                   const ChannelEnd& endOf, std::vector<ClipEssence>& essence) {
    const bool inOneFile =
        media::FamilyOfCodec(platform::TextFromUtf8(codec).View()) != media::CodecFamily::Other;
    const std::size_t video = essence.size();
    essence.push_back({inOneFile ? &media::kOneFileEssence : &media::kVideoFiles, 0, videoEnd});
    for (std::size_t i = 0; i < std::min(channels, kMostChannels); ++i) {
        const std::uint64_t end = endOf(i);
        if (inOneFile) {
            essence[video].size = std::max(essence[video].size, end);
        } else {
            essence.push_back({&media::kAudioFiles, i, end});
        }
    }
}

/// No more than file names have numbers for.
constexpr std::size_t kMostVoices = 100;

/// Of recordings whose memos do not tell.
constexpr const wchar_t* kUsualVoiceFormat = L"WAV";

/// A memo with any of these has a recording, and the first tells its format.
constexpr std::array kVoiceNames = {media::MemoName::VoiceFormat,
                                    media::MemoName::VoiceBitsPerSample,
                                    media::MemoName::VoiceSamplingRate};

constexpr std::size_t IndexOf(media::MemoName name) {
    return static_cast<std::size_t>(name);
}

/// Recordings are counted apart from the memos that have none.
void AppendVoice(std::size_t number, std::string_view format, std::vector<ClipEssence>& promises) {
    if (number < kMostVoices) {
        promises.push_back({&media::kVoiceFiles, number, 0, platform::TextFromUtf8(format)});
    }
}

void AppendVoices(dom::Node& clip, std::vector<ClipEssence>& promises) {
    const std::string memos =
        std::string(media::kClipContentPath).append("/").append(media::kMemoPath);
    std::size_t number = 0;
    for (dom::Node* const memo : dom::SelectAll(clip, memos)) {
        const auto tells = [&](media::MemoName name) {
            return dom::SelectFirst(*memo, media::kMemoNames[IndexOf(name)]) != nullptr;
        };
        if (std::any_of(kVoiceNames.begin(), kVoiceNames.end(), tells)) {
            AppendVoice(number++, TextAt(*memo, media::kMemoNames[IndexOf(kVoiceNames.front())]),
                        promises);
        }
    }
}

void AppendVoices(const dom::FieldValues::List& memos, std::vector<ClipEssence>& promises) {
    std::size_t number = 0;
    for (std::size_t i = 0; i < memos.count; ++i) {
        const auto cell = [&](media::MemoName name) -> const auto& {
            return memos.cells[i * media::kMemoNames.size() + IndexOf(name)];
        };
        if (std::any_of(kVoiceNames.begin(), kVoiceNames.end(),
                        [&](media::MemoName name) { return cell(name).isThere; })) {
            AppendVoice(number++, cell(kVoiceNames.front()).text, promises);
        }
    }
}

void AppendIcon(bool isThere, std::vector<ClipEssence>& promises) {
    if (isThere) {
        promises.push_back({&media::kIconFiles});
    }
}

} // namespace

std::vector<ClipEssence> EssenceOf(const dom::Document& metadata) {
    dom::Node& document = metadata.Content()->DocumentNode();
    const auto textOf = [&](ClipPath path) { return TextAt(document, media::FullPath(path)); };
    const std::vector<dom::Node*> channels = dom::SelectAll(
        document, std::string(media::kClipContentPath).append("/").append(media::kAudioPath));
    const auto endOf = [&](std::size_t i) {
        const auto inAudio = [&](ClipPath path) {
            return TextAt(*channels[i], media::InAudio(path));
        };
        return EndOf(inAudio(ClipPath::AudioStartByteOffset), inAudio(ClipPath::AudioDataSize));
    };
    std::vector<ClipEssence> essence;
    AppendEssence(textOf(ClipPath::Codec),
                  EndOf(textOf(ClipPath::VideoStartByteOffset), textOf(ClipPath::VideoDataSize)),
                  channels.size(), endOf, essence);
    return essence;
}

std::vector<ClipEssence> PromisesOf(const dom::Document& metadata) {
    const std::string icon =
        std::string(media::kClipContentPath).append("/").append(media::kIconFormatPath);
    std::vector<ClipEssence> promises = EssenceOf(metadata);
    AppendIcon(!TextAt(metadata.Content()->DocumentNode(), icon).empty(), promises);
    AppendVoices(metadata.Content()->DocumentNode(), promises);
    return promises;
}

void AppendPromises(const dom::FieldValues& values, std::vector<ClipEssence>& promises) {
    const auto textOf = [&](ClipPath path) {
        return values.values[static_cast<std::size_t>(path)].text;
    };
    const dom::FieldValues::List& audio = values.lists[static_cast<std::size_t>(ClipList::Audio)];
    const auto endOf = [&](std::size_t i) {
        const auto cell = [&](AudioCell each) {
            constexpr auto kCells = static_cast<std::size_t>(AudioCell::Count);
            return audio.cells[i * kCells + static_cast<std::size_t>(each)].text;
        };
        return EndOf(cell(AudioCell::StartByteOffset), cell(AudioCell::DataSize));
    };
    AppendEssence(textOf(ClipPath::Codec),
                  EndOf(textOf(ClipPath::VideoStartByteOffset), textOf(ClipPath::VideoDataSize)),
                  audio.count, endOf, promises);
    AppendIcon(!values.values[kIconFormat].text.empty(), promises);
    AppendVoices(values.lists[static_cast<std::size_t>(ClipList::Memo)], promises);
}

CString VoiceFileOf(const CString& clip, std::size_t number, const CString& format) {
    const bool isTold = !format.IsEmpty() && media::IsPlainName(format);
    return media::FileNameOf(media::kVoiceFiles, clip, number) + L"." +
           (isTold ? format : CString(kUsualVoiceFormat));
}

} // namespace nqp2::clips
