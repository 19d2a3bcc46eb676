// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/rewrap/file_facts.h"

#include "nqp2/clip_cells.h"
#include "nqp2/timeline/clip_facts.h"
#include "NQP2ParserU/ClipTimes.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

namespace nqp2::rewrap {
namespace {

constexpr std::wstring_view kStandard[] = {L"DV25", L"DV50"}; ///< always fields
constexpr std::pair<std::wstring_view, RewrapEssence> kPictures[] = {
    {L"DV", RewrapEssence::Dv},
    {L"AVC-I_", RewrapEssence::AvcIntra},
    {L"AVC", RewrapEssence::H264}};
constexpr std::pair<std::string_view, RewrapEssence> kSounds[] = {
    {"PCM", RewrapEssence::Pcm}, {"LPCM", RewrapEssence::Pcm}, {"AC-3", RewrapEssence::Ac3}};

/// The essence of the first row that the name begins with.
template <class Rows, class Name>
std::optional<RewrapEssence> EssenceIn(const Rows& rows, Name name) {
    const auto* const found = std::find_if(std::begin(rows), std::end(rows), [&](const auto& row) {
        return name.starts_with(row.first);
    });
    return found == std::end(rows) ? std::nullopt : std::optional(found->second);
}

template <class Names>
bool BeginsWithOne(const CString& codec, const Names& names) {
    return std::any_of(std::begin(names), std::end(names),
                       [&](std::wstring_view name) { return codec.View().starts_with(name); });
}

/// Two positive numbers with a sign between them.
struct Pair {
    std::int32_t first = 0;
    std::int32_t second = 0;
};

std::optional<Pair> PairIn(const CString& text, char sign) {
    const std::string bytes = BytesFromText(text);
    const char* const end = bytes.data() + bytes.size();
    Pair pair;
    const auto [middle, error] = std::from_chars(bytes.data(), end, pair.first);
    if (error != std::errc() || middle == end || *middle != sign) {
        return std::nullopt;
    }
    const auto [last, secondError] = std::from_chars(middle + 1, end, pair.second);
    const bool isWhole = secondError == std::errc() && last == end;
    return isWhole && pair.first > 0 && pair.second > 0 ? std::optional(pair) : std::nullopt;
}

/// What the clip's edit unit says, in which its length is counted.
const FrameRate* RateOfUnit(const ClipMetadata& metadata) {
    const auto unit =
        std::find_if(metadata.others.begin(), metadata.others.end(), [](const MetadataText& each) {
            return each.path == L"P2Main/ClipContent/EditUnit";
        });
    const std::optional<Pair> pair =
        unit == metadata.others.end() ? std::nullopt : PairIn(unit->text, '/');
    return pair ? timeline::CameraRate(pair->second, pair->first) : nullptr;
}

/// What the stream's own description says, without regard to how it was shot.
const FrameRate* RateOfTrack(const ClipMetadata& metadata) {
    const auto track =
        std::find_if(metadata.tracks.begin(), metadata.tracks.end(),
                     [](const TrackMetadata& each) { return each.kind == L"video"; });
    return track == metadata.tracks.end()
               ? nullptr
               : FindFrameRate(track->format.Mid(track->format.ReverseFind(L' ') + 1));
}

} // namespace

bool IsOnCard(const _tag_P2Clip& clip, CardKind kind) {
    return kind == CardKind::P2 ||
           (kind == CardKind::Avchd && clip.CodecName.View().starts_with(L"AVCHD"));
}

FrameRate RateOfFile(const _tag_P2Clip& clip, const ClipMetadata& metadata) {
    const FrameRate* const own = RateOfUnit(metadata);
    const FrameRate* const track = own != nullptr ? own : RateOfTrack(metadata);
    const FrameRate* const rate = track != nullptr ? track : FindFrameRate(clip.FrameRate);
    return rate != nullptr ? *rate : FrameRate{0, 1};
}

bool IsCodedInterlaced(const _tag_P2Clip& clip) {
    const std::wstring_view codec = clip.CodecName.View();
    const bool tellsRate =
        codec.find(L'/') != std::wstring_view::npos || codec.starts_with(L"AVCHD");
    return BeginsWithOne(clip.CodecName, kStandard) ||
           (tellsRate ? codec.ends_with(L'i') : timeline::RateOf(clip).IsInterlaced());
}

std::optional<RewrapEssence> PictureEssence(const _tag_P2Clip& clip) {
    return EssenceIn(kPictures, clip.CodecName.View());
}

bool IsIntra(const _tag_P2Clip& clip) {
    const std::optional<RewrapEssence> essence = PictureEssence(clip);
    return essence == RewrapEssence::Dv || essence == RewrapEssence::AvcIntra;
}

std::optional<RewrapEssence> SoundEssence(const std::string& text) {
    return EssenceIn(kSounds, std::string_view(text));
}

void ReadAspect(const CString& text, std::uint32_t& width, std::uint32_t& height) {
    if (const std::optional<Pair> pair = PairIn(text, ':')) {
        width = static_cast<std::uint32_t>(pair->first);
        height = static_cast<std::uint32_t>(pair->second);
    }
}

std::vector<std::string> SoundTexts(const _tag_P2Clip& clip, const ClipMetadata& metadata,
                                    int files) {
    std::vector<std::string> texts;
    for (const TrackMetadata& track : metadata.tracks) {
        if (track.kind == L"audio") {
            texts.push_back(
                fmt::format("{}, {}", BytesFromText(track.codec), BytesFromText(track.format)));
        }
    }
    if (metadata.tracks.IsEmpty()) {
        const int channels = files > 0 ? files : tool::AudioChannels(clip);
        texts.assign(static_cast<std::size_t>(channels),
                     fmt::format("PCM, 1 channel, {} bits", timeline::BitsOf(clip)));
    }
    return texts;
}

} // namespace nqp2::rewrap
