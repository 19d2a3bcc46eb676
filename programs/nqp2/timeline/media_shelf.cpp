// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/timeline/media_shelf.h"

#include "nqp2/clip_cells.h"
#include "nqp2/timeline/clip_facts.h"
#include "nqp2/timeline/plain_text.h"
#include "NQP2ParserU/ClipTimes.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <utility>

namespace nqp2::timeline {
namespace {

CString Key(const CString& name) {
    return CString(name).MakeUpper();
}

std::string FullName(const std::string& first, const std::string& second) {
    return first.empty() || second.empty() ? first + second : first + ' ' + second;
}

/// Far beyond what people write; thousands of events may show the same thousands of memos.
constexpr std::size_t kMostMemoBytes = std::size_t{64} * 1024 * 1024;

/// About what the documents tell of memos; no more than needed beyond the most.
std::size_t BytesOfMemos(const Timeline& timeline) {
    constexpr std::size_t kAround = 500; // what stands around a text
    std::size_t bytes = 0;
    for (const Event& event : timeline.events) {
        for (const PlacedMemo& memo : MemosOf(timeline, event)) {
            bytes += kAround + memo.memo->person.size() + memo.memo->text.size();
        }
        if (bytes > kMostMemoBytes) {
            break;
        }
    }
    return bytes;
}

/// A text of a clip's, which each of its events tells.
std::string TextOf(const CString& text) {
    constexpr std::size_t kMostBytes = 1000;
    return CutText(BytesFromText(text), kMostBytes);
}

} // namespace

MediaShelf::MediaShelf(const CardView& card, const BuildOptions& options, Remarks& remarks)
    : m_card(card), m_options(options), m_remarks(remarks), m_metadata(card.root),
      m_takes(PlacesInTakes(*card.report)) {}

std::size_t MediaShelf::Of(const _tag_P2Clip& clip) {
    const auto known = m_clips.find(Key(clip.ClipName));
    if (known != m_clips.end()) {
        return known->second;
    }
    Media media;
    media.name = BytesFromText(clip.ClipName);
    media.identifier = TextOf(clip.GlobalClipID);
    media.isThere = true;
    media.rate = RateOf(clip);
    media.dropFrame =
        m_card.kind != CardKind::Avchd && clip.DropFrame != 0 && media.rate.droppedNumbers != 0;
    media.start = StartOfClip(clip, media.rate, m_card.kind);
    if (m_card.hasTimecode(clip)) {
        media.timecode = BytesFromText(ClipTimecode(clip));
    } else {
        m_remarks.Add(media.name + ": no timecode is known: counted from 00:00:00:00");
    }
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

void MediaShelf::Finish(Timeline& timeline) {
    timeline.sources = m_sources;
    if (!timeline.events.empty()) {
        timeline.raster = At(timeline.events.front().media).raster;
    }
    if (BytesOfMemos(timeline) > kMostMemoBytes) {
        m_remarks.Add("its events show too many memos: all are left out");
        for (Media& media : m_sources->media) {
            media.memos.clear();
        }
    }
}

std::size_t MediaShelf::AddFile(const std::string& path, bool isThere, bool hasPicture,
                                int channels) {
    m_sources->files.push_back({path, isThere, hasPicture, channels});
    return m_sources->files.size() - 1;
}

void MediaShelf::AddFiles(const _tag_P2Clip& clip, Media& media) {
    CArray<ClipFile> files;
    if (!m_card.files->Read(clip, files)) {
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
        TextOf(TextFromBytes(tool::OwnTitle(clip))),
        BytesFromText(IsoDate(metadata.shoot.startDate.IsEmpty() ? clip.StartDate
                                                                 : metadata.shoot.startDate)),
        TextOf(metadata.scenario.sceneNo),
        TextOf(metadata.scenario.takeNo),
        FullName(TextOf(metadata.device.manufacturer), TextOf(metadata.device.modelName)),
        TextOf(metadata.shoot.shooter)};
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
    media.reel = m_reels.Fresh(media.name);
    m_sources->media.push_back(std::move(media));
    return m_sources->media.size() - 1;
}

} // namespace nqp2::timeline
