// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/timeline/media_shelf.h"

#include "nqp2/clip_cells.h"
#include "NQP2ParserU/ClipTimes.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <utility>

namespace nqp2::timeline {
namespace {

constexpr std::int32_t kHalfNumbered = 50; ///< from so many numbers a second on

CString Key(const CString& name) {
    return CString(name).MakeUpper();
}

/// The rate of a clip; 25 where it is none that is known, as readers of cards take it.
FrameRate RateOf(const _tag_P2Clip& clip) {
    const FrameRate* const rate = FindFrameRate(clip.FrameRate);
    return rate != nullptr ? *rate : FrameRate();
}

/// Where the record does not tell the lines, the codec's name does: "AVC-I_720/50p".
std::int32_t LinesOf(const _tag_P2Clip& clip, const FrameRate& rate) {
    if (clip.ActiveLine > 0) {
        return clip.ActiveLine;
    }
    constexpr const wchar_t* kStandard[] = {L"DV25", L"DV50"};
    const bool isStandard =
        std::any_of(std::begin(kStandard), std::end(kStandard),
                    [&](const wchar_t* codec) { return clip.CodecName.Find(codec) == 0; });
    if (isStandard) {
        return rate.Is50Hz() ? 576 : 480;
    }
    return clip.CodecName.Find(L"_720") >= 0 ? 720 : 1080;
}

Raster RasterOf(const _tag_P2Clip& clip, const FrameRate& rate, CardKind kind) {
    const std::wstring_view codec = clip.CodecName.View();
    // Records of AVCHD have rates of frames alone, but at 50 Hz.
    const bool isInterlaced =
        rate.IsInterlaced() ||
        (kind == CardKind::Avchd && codec.ends_with(L'i') && rate.Nominal() <= 30);
    return {LinesOf(clip, rate), isInterlaced, !(clip.AspectRatio == L"4:3")};
}

std::int32_t BitsOf(const _tag_P2Clip& clip) {
    const std::string text = BytesFromText(clip.AudioBitsPerSample);
    std::int32_t bits = 0;
    std::from_chars(text.data(), text.data() + text.size(), bits);
    return bits > 0 ? bits : 16;
}

std::string FullName(const std::string& first, const std::string& second) {
    return first.empty() || second.empty() ? first + second : first + ' ' + second;
}

/// Recordings of the report, by the names of their clips in capitals.
std::map<CString, TakePlace> PlacesInTakes(const ScanReport& report) {
    std::map<CString, TakePlace> places;
    for (const Take& take : report.takes) {
        const std::int64_t count = take.segments.GetSize() + take.missing.GetSize();
        for (std::int64_t i = 0; i < take.segments.GetSize(); ++i) {
            const auto before =
                std::count_if(take.missing.begin(), take.missing.end(),
                              [i](const MissingSegment& gap) { return gap.before <= i; });
            places[Key(take.segments[i])] = {BytesFromText(take.topGlobalClipID), i + before + 1,
                                             count, 0};
        }
    }
    return places;
}

} // namespace

std::int64_t StartOfClip(const _tag_P2Clip& clip, const FrameRate& rate, CardKind kind) {
    if (kind == CardKind::Avchd) {
        return 0; // editing systems find no timecode in transport streams
    }
    CString text = ClipTimecode(clip);
    if (text.IsEmpty()) {
        return 0;
    }
    const bool dropFrame = clip.DropFrame != 0;
    const int frames = (text[9] - L'0') * 10 + (text[10] - L'0');
    if (kind == CardKind::P2 && rate.Nominal() >= kHalfNumbered && frames < rate.Nominal() / 2) {
        // These metadata number every second frame, files number all.
        text = text.Left(9) + TextFromBytes(fmt::format("{:02}", frames * 2));
    }
    return std::max<std::int64_t>(TimecodeFrame(text, rate, dropFrame), 0);
}

MediaShelf::MediaShelf(const CardView& card, const BuildOptions& options, Remarks& remarks)
    : m_card(card), m_options(options), m_remarks(remarks), m_files(card.root),
      m_metadata(card.root), m_takes(PlacesInTakes(*card.report)) {}

std::size_t MediaShelf::Of(const _tag_P2Clip& clip) {
    const auto known = m_clips.find(Key(clip.ClipName));
    if (known != m_clips.end()) {
        return known->second;
    }
    Media media;
    media.name = BytesFromText(clip.ClipName);
    media.identifier = BytesFromText(clip.GlobalClipID);
    media.isThere = true;
    media.rate = RateOf(clip);
    media.dropFrame =
        m_card.kind != CardKind::Avchd && clip.DropFrame != 0 && media.rate.droppedNumbers != 0;
    media.start = StartOfClip(clip, media.rate, m_card.kind);
    media.timecode = BytesFromText(ClipTimecode(clip));
    media.length = std::max(clip.Duration, 0);
    media.raster = RasterOf(clip, media.rate, m_card.kind);
    media.bits = BitsOf(clip);
    AddFiles(clip, media);
    AddMetadata(clip, media);
    if (const auto take = m_takes.find(Key(clip.ClipName)); take != m_takes.end()) {
        media.take = take->second;
        media.take->offset = clip.OffsetInShot;
    }
    TellLacking(media);
    const std::size_t index = Keep(std::move(media));
    m_clips.emplace(Key(clip.ClipName), index);
    return index;
}

std::size_t MediaShelf::Missing(const tag_P2EDLClipTrackEvent& event, const FrameRate& rate,
                                std::int64_t length) {
    const CString key = Key(event.ClipName) + L"/" + Key(event.GlobalClipID);
    auto known = m_missing.find(key);
    if (known == m_missing.end()) {
        Media media;
        media.name = BytesFromText(event.ClipName);
        media.identifier = BytesFromText(event.GlobalClipID);
        media.rate = rate;
        media.timecode = BytesFromText(FrameTimecode(0, rate, false));
        media.picture = AddFile("", false, true, 0);
        if (m_options.sound != SoundFrom::Nowhere) {
            for (int channel = 0; channel < static_cast<int>(std::size(event.Channels));
                 ++channel) {
                media.sound.push_back({AddFile("", false, false, 1), 0});
            }
        }
        known = m_missing.emplace(key, Keep(std::move(media))).first;
    }
    Media& media = m_sources->media[known->second];
    media.length = std::max(media.length, length);
    return known->second;
}

std::size_t MediaShelf::AddFile(const std::string& path, bool isThere, bool hasPicture,
                                int channels) {
    m_sources->files.push_back({path, isThere, hasPicture, channels});
    return m_sources->files.size() - 1;
}

void MediaShelf::AddFiles(const _tag_P2Clip& clip, Media& media) {
    CArray<ClipFile> files;
    if (!m_files.Read(clip, files)) {
        m_remarks.Add(media.name + ": there is no memory to look for its files");
    }
    ClipFile picture;
    picture.path = clip.VideoPath;
    picture.state = clip.VideoPath.IsEmpty() ? ClipFileState::Missing : ClipFileState::Present;
    for (const ClipFile& file : files) {
        picture = file.role == ClipFileRole::Video ? file : picture;
        if (file.role == ClipFileRole::Proxy && !media.proxy &&
            file.state == ClipFileState::Present) {
            media.proxy = AddFile(m_card.pathOf(file.path), true, true,
                                  std::popcount(clip.Proxy.ProxyAudioMask));
        }
    }
    const bool isThere =
        picture.state == ClipFileState::Present || picture.state == ClipFileState::Short;
    if (picture.state == ClipFileState::Short) {
        m_remarks.Add(media.name + ": its picture is cut off");
    }
    const FrameRate* const proxyRate = FindFrameRate(clip.Proxy.ProxyFrameRate);
    if (m_options.proxies && media.proxy && proxyRate != nullptr &&
        !IsSame(*proxyRate, media.rate)) {
        m_remarks.Add(media.name + ": its proxy has another rate");
    }
    media.picture = AddFile(m_card.pathOf(picture.path), isThere, true, 0);
    if (m_options.sound != SoundFrom::Nowhere) {
        AddSound(clip, files, media);
    }
}

void MediaShelf::AddSound(const _tag_P2Clip& clip, const CArray<ClipFile>& files, Media& media) {
    for (const ClipFile& file : files) {
        if (file.role == ClipFileRole::Audio) {
            const bool isThere =
                file.state == ClipFileState::Present || file.state == ClipFileState::Short;
            const auto channel = static_cast<std::size_t>(std::max(file.number, 0));
            while (media.sound.size() < channel) { // the metadata skip numbers
                media.sound.push_back({AddFile("", false, false, 1), 0});
            }
            media.sound.push_back({AddFile(m_card.pathOf(file.path), isThere, false, 1), 0});
        }
    }
    const bool isInPicture = media.sound.empty() || m_options.sound == SoundFrom::Picture;
    if (isInPicture) {
        const std::size_t shown =
            m_options.proxies ? media.proxy.value_or(media.picture) : media.picture;
        const int channels =
            media.sound.empty() ? tool::AudioChannels(clip) : static_cast<int>(media.sound.size());
        media.sound.clear();
        for (int channel = 0; channel < channels; ++channel) {
            media.sound.push_back({shown, channel});
        }
        m_sources->files[shown].channels = channels;
    } else if (m_options.proxies && media.proxy) {
        UseProxySound(clip, media);
    }
}

void MediaShelf::UseProxySound(const _tag_P2Clip& clip, Media& media) {
    int rank = 0;
    for (std::size_t channel = 0; channel < media.sound.size(); ++channel) {
        if ((clip.Proxy.ProxyAudioMask >> channel & 1U) != 0) {
            media.sound[channel] = {*media.proxy, rank++};
        }
    }
}

void MediaShelf::AddMetadata(const _tag_P2Clip& clip, Media& media) {
    ClipMetadata metadata;
    CString problem;
    if (m_card.kind == CardKind::Camera) {
        return; // what a worker alone may open
    }
    if (m_metadata.Read(clip, metadata, problem) == MetadataStatus::Unreadable) {
        m_remarks.Add(fmt::format("{}: memos and names are left out: {}", media.name,
                                  BytesFromText(problem)));
    }
    media.logging = {
        tool::OwnTitle(clip),
        BytesFromText(IsoDate(metadata.shoot.startDate.IsEmpty() ? clip.StartDate
                                                                 : metadata.shoot.startDate)),
        BytesFromText(metadata.scenario.sceneNo),
        BytesFromText(metadata.scenario.takeNo),
        FullName(BytesFromText(metadata.device.manufacturer),
                 BytesFromText(metadata.device.modelName)),
        BytesFromText(metadata.shoot.shooter)};
    for (const MemoMetadata& memo : metadata.memos) {
        if (memo.offset < 0 || memo.offset >= media.length) {
            m_remarks.Add(fmt::format("{}: a memo lies beyond its frames", media.name));
        } else if (m_options.memos) {
            media.memos.push_back(
                {memo.offset, BytesFromText(memo.person), BytesFromText(memo.text)});
        }
    }
    std::stable_sort(media.memos.begin(), media.memos.end(),
                     [](const Memo& left, const Memo& right) { return left.frame < right.frame; });
}

void MediaShelf::TellLacking(const Media& media) {
    const std::vector<MediaFile>& files = m_sources->files;
    if (!files[media.picture].isThere) {
        m_remarks.Add(media.name + ": its picture is missing");
    }
    const auto lost =
        std::count_if(media.sound.begin(), media.sound.end(), [&](const SoundSource& source) {
            return !files[source.file].isThere && source.file != media.picture;
        });
    if (lost > 0) {
        m_remarks.Add(fmt::format("{}: {} of its sound channels {} missing", media.name, lost,
                                  lost == 1 ? "is" : "are"));
    }
    if (m_options.proxies && !media.proxy) {
        m_remarks.Add(media.name + ": there is no proxy; its own picture is shown");
    }
}

std::size_t MediaShelf::Keep(Media media) {
    media.reel = FreeReel(media.name);
    m_sources->media.push_back(std::move(media));
    return m_sources->media.size() - 1;
}

std::string MediaShelf::FreeReel(const std::string& name) {
    constexpr std::size_t kLongest = 8;
    std::string stem;
    for (const char ch : name) {
        const char upper = ch >= 'a' && ch <= 'z' ? static_cast<char>(ch - 'a' + 'A') : ch;
        const bool isPlain = (upper >= 'A' && upper <= 'Z') || (upper >= '0' && upper <= '9');
        if (isPlain && stem.size() < kLongest) {
            stem += upper;
        }
    }
    stem = stem.empty() ? "CLIP" : stem;
    std::string reel = stem;
    for (int number = m_reels.try_emplace(stem, 0).first->second;; ++number) {
        const std::string digits = number == 0 ? "" : std::to_string(number + 1);
        reel = stem.substr(0, kLongest - digits.size()) + digits;
        if (m_taken.insert(reel).second) {
            m_reels[stem] = number + 1;
            return reel;
        }
    }
}

} // namespace nqp2::timeline
