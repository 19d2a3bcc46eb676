// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/essence_lookup.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace nqp2::clips {
namespace {

// Channels that the reader of a named clip looks for.
constexpr int kNamedChannels = 4;

std::uint64_t Bit(int number) {
    return std::uint64_t{1} << static_cast<unsigned>(number);
}

void MarkIfPresent(_tag_P2Clip& clip, const CString& path, int bit) {
    if (!path.IsEmpty()) {
        clip.EssenceMask |= Bit(bit);
    }
}

CString AudioName(const CString& clip, int channel) {
    return media::FileNameOf(media::kAudioFiles, clip, static_cast<std::size_t>(channel));
}

CString FindOne(const EssenceLookup& essence, const media::ClipFileKind& kind,
                const CString& clip) {
    return essence.PathIfExists(kind, media::FileNameOf(kind, clip));
}

/// The files that both readers look for in the same way.
void FindCompanions(const EssenceLookup& essence, _tag_P2Clip& clip) {
    const CString& name = clip.ClipName;
    P2Proxy& proxy = clip.Proxy;
    constexpr int kMov = 2;
    proxy.ProxyExt = proxy.ProxyFormat == kMov ? media::kMovProxy.Text() : media::kMp4Proxy.Text();
    proxy.ProxyFilePath = essence.PathIfExists(media::kProxyFiles, name + proxy.ProxyExt);
    clip.ProxyPath = essence.PathIfExists(media::kProxyFiles, name + media::kMp4Proxy.Text());
    clip.IconPath = FindOne(essence, media::kIconFiles, name);
    clip.XmlPath = FindOne(essence, media::kMetadataFiles, name);
}

/// Video and audio in one file.
void FindFamilyEssence(const EssenceLookup& essence, int channels, _tag_P2Clip& clip) {
    clip.VideoPath = FindOne(essence, media::kOneFileEssence, clip.ClipName);
    MarkIfPresent(clip, clip.VideoPath, 0);
    for (int channel = 0; channel < std::min(channels, _tag_P2Clip::kAudioSlots); ++channel) {
        clip.AudioPath[channel] = clip.VideoPath;
        MarkIfPresent(clip, clip.VideoPath, channel + 1);
    }
}

/// A file each. A name that could lead out of the card's folders makes no path at all.
void AssumeEssence(const EssenceLookup& essence, int channels, _tag_P2Clip& clip) {
    if (!media::IsPlainName(clip.ClipName)) {
        return;
    }
    clip.VideoPath =
        essence.PathOf(media::kVideoFiles, media::FileNameOf(media::kVideoFiles, clip.ClipName));
    clip.EssenceMask |= Bit(0);
    for (int channel = 0; channel < std::min(channels - 1, _tag_P2Clip::kAudioSlots); ++channel) {
        clip.AudioPath[channel] =
            essence.PathOf(media::kAudioFiles, AudioName(clip.ClipName, channel));
        clip.EssenceMask |= Bit(channel + 1);
    }
}

} // namespace

EssenceLookup::EssenceLookup(platform::Place contents, Mode mode)
    : m_contents(std::move(contents)), m_mode(mode) {}

CString EssenceLookup::PathOf(const media::ClipFileKind& kind, const CString& name) const {
    return m_contents.PathOf(kind.folder.Path() + name);
}

CString EssenceLookup::PathIfExists(const media::ClipFileKind& kind, const CString& name) const {
    if (!media::IsPlainName(name)) {
        return {};
    }
    const platform::Place place = m_contents.Below(kind.folder.Path());
    if (m_mode == Mode::Scan) {
        static_cast<void>(place.Names()); // answers from then on
    }
    return place.Has(name) ? PathOf(kind, name) : CString();
}

void FindNamedFiles(const EssenceLookup& essence, _tag_P2Clip& clip) {
    clip.EssenceMask = 0;
    FindCompanions(essence, clip);
    clip.VideoPath = FindOne(essence, media::kVideoFiles, clip.ClipName);
    MarkIfPresent(clip, clip.VideoPath, 0);
    for (int channel = 0; channel < kNamedChannels; ++channel) {
        clip.AudioPath[channel] =
            essence.PathIfExists(media::kAudioFiles, AudioName(clip.ClipName, channel));
        MarkIfPresent(clip, clip.AudioPath[channel], channel + 1);
    }
}

void FindScannedFiles(const EssenceLookup& essence, bool inOneFile, int channels,
                      _tag_P2Clip& clip) {
    clip.EssenceMask = 0;
    FindCompanions(essence, clip);
    if (inOneFile) {
        FindFamilyEssence(essence, channels, clip);
    } else {
        AssumeEssence(essence, channels, clip);
    }
}

} // namespace nqp2::clips
