// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/clip_content.h"

#include "clips/clip_path.h"
#include "media/codec_family.h"
#include "platform/number_text.h"
#include "platform/unicode.h"
#include "xml/dom/document.h"
#include "xml/dom/select.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace nqp2::clips {
namespace {

constexpr ClipFileRule kRules[] = {
    {"VIDEO", ClipPart::Video, 0, L".MXF"},   {"AVCLIP", ClipPart::Video, 0, L".MXF"},
    {"AUDIO", ClipPart::Audio, 2, L".MXF"},   {"ICON", ClipPart::Other, 0, L".BMP"},
    {"PROXY", ClipPart::Other, 0, L""},       {"VOICE", ClipPart::Other, 2, L""},
    {"CLIP", ClipPart::Metadata, 0, L".XML"},
};
constexpr const char* kVideo = kRules[0].folder;
constexpr const char* kInOneFile = kRules[1].folder;
constexpr const char* kAudio = kRules[2].folder;
constexpr const char* kSuffix = ".MXF";

/// More channels than files can be numbered for.
constexpr std::size_t kMostChannels = 101;

bool IsDigit(wchar_t ch) {
    return ch >= L'0' && ch <= L'9';
}

constexpr std::string_view Below(ClipPath path) {
    return kClipPaths[static_cast<std::size_t>(path)].below;
}

/// Where a value of each audio channel stands, seen from the channel's element.
constexpr std::string_view InChannel(ClipPath path) {
    return Below(path).substr(kAudioPath.size() + 1);
}

std::string Below(std::string_view path) {
    return std::string(kClipContentPath).append("/").append(path);
}

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

std::string AudioSuffix(std::size_t channel) {
    std::array<char, 24> text{};
    std::snprintf(text.data(), text.size(), "%02zu%s", channel, kSuffix);
    return text.data();
}

} // namespace

std::span<const ClipFileRule> ClipFileRules() {
    return kRules;
}

std::wstring_view ClipNameIn(std::wstring_view file, const ClipFileRule& rule) {
    const std::size_t dot = file.find_last_of(L'.');
    if (file.starts_with(L'.') || dot == std::wstring_view::npos || dot <= rule.digits ||
        (!rule.extension.empty() && file.substr(dot) != rule.extension)) {
        return {};
    }
    const std::wstring_view number = file.substr(dot - rule.digits, rule.digits);
    return std::all_of(number.begin(), number.end(), IsDigit) ? file.substr(0, dot - rule.digits)
                                                              : std::wstring_view();
}

std::vector<ClipEssence> EssenceOf(const dom::Document& metadata) {
    dom::Node& document = metadata.Content()->DocumentNode();
    const std::string codec = TextAt(document, Below(Below(ClipPath::Codec)));
    const bool inOneFile =
        media::FamilyOfCodec(platform::TextFromUtf8(codec).View()) != media::CodecFamily::Other;
    std::vector<ClipEssence> essence = {
        {inOneFile ? kInOneFile : kVideo, kSuffix,
         EndOfEssence(document, Below(Below(ClipPath::VideoStartByteOffset)),
                      Below(Below(ClipPath::VideoDataSize)))}};
    const std::vector<dom::Node*> channels = dom::SelectAll(document, Below(kAudioPath));
    for (std::size_t i = 0; i < std::min(channels.size(), kMostChannels); ++i) {
        const std::uint64_t end =
            EndOfEssence(*channels[i], InChannel(ClipPath::AudioStartByteOffset),
                         InChannel(ClipPath::AudioDataSize));
        if (inOneFile) {
            essence.front().size = std::max(essence.front().size, end);
        } else {
            essence.push_back({kAudio, AudioSuffix(i), end});
        }
    }
    return essence;
}

} // namespace nqp2::clips
