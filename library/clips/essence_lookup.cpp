// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/essence_lookup.h"

#include "media/card_layout.h"

#include <algorithm>
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

CString AudioName(const CString& clipName, int channel) {
    static constexpr const wchar_t* kEndings[_tag_P2Clip::kAudioSlots] = {
        L"00.MXF", L"01.MXF", L"02.MXF", L"03.MXF", L"04.MXF", L"05.MXF", L"06.MXF", L"07.MXF"};
    return clipName + kEndings[channel];
}

/// The files that both readers look for in the same way.
void FindCompanions(const EssenceLookup& essence, _tag_P2Clip& clip) {
    const CString& name = clip.ClipName;
    _tag_P2Proxy& proxy = clip.Proxy;
    constexpr int kMov = 2;
    proxy.ProxyExt = proxy.ProxyFormat == kMov ? media::kMovExtension : media::kMp4Extension;
    proxy.ProxyFilePath = essence.PathIfExists(media::kProxyFolder, name + proxy.ProxyExt);
    clip.ProxyPath = essence.PathIfExists(media::kProxyFolder, name + media::kMp4Extension);
    clip.IconPath = essence.PathIfExists(media::kIconFolder, name + media::kIconExtension);
    clip.XmlPath = essence.PathIfExists(media::kClipFolder, name + media::kXmlExtension);
}

/// Video and audio in one file.
void FindFamilyEssence(const EssenceLookup& essence, int channels, _tag_P2Clip& clip) {
    clip.VideoPath =
        essence.PathIfExists(media::kAvClipFolder, clip.ClipName + media::kEssenceExtension);
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
    clip.VideoPath = essence.PathOf(media::kVideoFolder, clip.ClipName + media::kEssenceExtension);
    clip.EssenceMask |= Bit(0);
    for (int channel = 0; channel < std::min(channels - 1, _tag_P2Clip::kAudioSlots); ++channel) {
        clip.AudioPath[channel] =
            essence.PathOf(media::kAudioFolder, AudioName(clip.ClipName, channel));
        clip.EssenceMask |= Bit(channel + 1);
    }
}

} // namespace

EssenceLookup::EssenceLookup(platform::Place contents, Mode mode)
    : m_contents(std::move(contents)), m_mode(mode) {}

CString EssenceLookup::PathOf(const wchar_t* folder, const CString& name) const {
    return m_contents.PathOf(folder + name);
}

CString EssenceLookup::PathIfExists(const wchar_t* folder, const CString& name) const {
    if (!media::IsPlainName(name)) {
        return {};
    }
    const platform::Place place = m_contents.Below(folder);
    if (m_mode == Mode::Scan) {
        static_cast<void>(place.Names()); // answers from then on
    }
    return place.Has(name) ? PathOf(folder, name) : CString();
}

void FindNamedFiles(const EssenceLookup& essence, _tag_P2Clip& clip) {
    clip.EssenceMask = 0;
    FindCompanions(essence, clip);
    clip.VideoPath =
        essence.PathIfExists(media::kVideoFolder, clip.ClipName + media::kEssenceExtension);
    MarkIfPresent(clip, clip.VideoPath, 0);
    for (int channel = 0; channel < kNamedChannels; ++channel) {
        clip.AudioPath[channel] =
            essence.PathIfExists(media::kAudioFolder, AudioName(clip.ClipName, channel));
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
