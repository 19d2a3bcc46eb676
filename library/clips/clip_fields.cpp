// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/clip_reader.h"

#include "media/dates.h"
#include "media/proxy_codes.h"
#include "platform/number_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>
#include <unordered_set>

namespace nqp2::clips {
namespace {

template <class Type>
struct Field {
    ClipPath path;
    Type _tag_P2Clip::*member;
};

constexpr Field<CString> kTexts[] = {
    {ClipPath::UserClipName, &_tag_P2Clip::UserClipName},
    {ClipPath::GlobalClipID, &_tag_P2Clip::GlobalClipID},
    {ClipPath::TopName, &_tag_P2Clip::TopClipName},
    {ClipPath::PreviousName, &_tag_P2Clip::PreviousClipName},
    {ClipPath::NextName, &_tag_P2Clip::NextClipName},
    {ClipPath::TopSerialNo, &_tag_P2Clip::TopSerialNo},
    {ClipPath::PreviousSerialNo, &_tag_P2Clip::PreviousSerialNo},
    {ClipPath::NextSerialNo, &_tag_P2Clip::NextSerialNo},
    {ClipPath::Codec, &_tag_P2Clip::CodecName},
    {ClipPath::AspectRatio, &_tag_P2Clip::AspectRatio},
    {ClipPath::FrameRate, &_tag_P2Clip::FrameRate},
    {ClipPath::AudioBitsPerSample, &_tag_P2Clip::AudioBitsPerSample},
};

constexpr Field<GUID> kGuids[] = {
    {ClipPath::GlobalClipID, &_tag_P2Clip::GlobalClipGuid},
    {ClipPath::TopGlobalClipID, &_tag_P2Clip::TopClipGuid},
    {ClipPath::NextGlobalClipID, &_tag_P2Clip::NextClipGuid},
    {ClipPath::PreviousGlobalClipID, &_tag_P2Clip::PreviousClipGuid},
    {ClipPath::GlobalShotID, &_tag_P2Clip::GlobalShotGuid},
};

constexpr Field<std::int32_t> kInt32s[] = {
    {ClipPath::Duration, &_tag_P2Clip::Duration},
};

constexpr Field<std::int64_t> kInt64s[] = {
    {ClipPath::OffsetInShot, &_tag_P2Clip::OffsetInShot},
    {ClipPath::VideoStartByteOffset, &_tag_P2Clip::VideoStartByteOffset},
    {ClipPath::VideoDataSize, &_tag_P2Clip::VideoDataSize},
    {ClipPath::AudioStartByteOffset, &_tag_P2Clip::AudioStartByteOffset},
    {ClipPath::AudioDataSize, &_tag_P2Clip::AudioDataSize},
};

// Index of the one character of the identifier that hosts show as its digit.
constexpr int kIdDigit = 31;

void ReadTables(const ClipTexts& texts, _tag_P2Clip& clip) {
    for (const auto& field : kTexts) {
        clip.*field.member = texts.Text(field.path);
    }
    for (const auto& field : kGuids) {
        clip.*field.member = texts.Guid(field.path);
    }
    for (const auto& field : kInt32s) {
        clip.*field.member = texts.Int32(field.path);
    }
    for (const auto& field : kInt64s) {
        clip.*field.member = texts.Int64(field.path);
    }
}

void ReadDates(const ClipTexts& texts, _tag_P2Clip& clip) {
    const CString start = texts.Text(ClipPath::StartDate);
    media::ReadClipDate(start, clip.ShootStartTime);
    clip.StartDate = media::WithoutZone(start);
    clip.EndDate = media::WithoutZone(texts.Text(ClipPath::EndDate));
}

_tag_P2Memo ReadMemo(const ClipTexts& texts, std::size_t index, std::int32_t offset) {
    const auto text = [&](MemoName name) { return texts.MemoText(index, name); };
    _tag_P2Memo memo;
    memo.Offset = offset;
    memo.Person = text(MemoName::Person);
    memo.Text = text(MemoName::Text);
    memo.VoiceBitsPerSample = platform::ToInt32(text(MemoName::VoiceBitsPerSample).View());
    memo.VoiceSamplingRate = platform::ToInt32(text(MemoName::VoiceSamplingRate).View());
    memo.VoiceFormat = text(MemoName::VoiceFormat);
    return memo;
}

/// Appends the memos but those of an offset that is there already: a memo of a file takes a few
/// bytes, its record many.
void ReadMemos(const ClipTexts& texts, _tag_P2Clip& clip) {
    const std::size_t count = texts.Count(ClipList::Memo);
    RemoveRepeatedMemos(clip.Memos);
    if (count == 0) {
        return;
    }
    std::unordered_set<std::int32_t> offsets;
    for (const _tag_P2Memo& memo : clip.Memos) {
        offsets.insert(memo.Offset);
    }
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t offset = platform::ToInt32(texts.MemoText(i, MemoName::Offset).View());
        if (offsets.insert(offset).second) {
            clip.Memos.Add(ReadMemo(texts, i, offset));
        }
    }
}

void ReadProxy(const ClipTexts& texts, P2Proxy& proxy) {
    const auto code = [&](ClipPath path, std::int32_t (*coded)(std::wstring_view)) {
        return coded(texts.Text(path).View());
    };
    proxy.ProxyFormat = code(ClipPath::ProxyFormat, media::ProxyFormatCode);
    proxy.ProxyVideoCodec = code(ClipPath::ProxyVideoCodec, media::ProxyVideoCodecCode);
    proxy.ProxyVideoBitRate = texts.Int32(ClipPath::ProxyVideoBitRate);
    proxy.ProxyFrameRate = texts.Text(ClipPath::ProxyFrameRate);
    proxy.ProxyResolution = code(ClipPath::ProxyResolution, media::ProxyResolutionCode);
    proxy.ProxyAspectRatio = texts.Text(ClipPath::ProxyAspectRatio);
    proxy.ProxyAudioCodec = code(ClipPath::ProxyAudioCodec, media::ProxyAudioCodecCode);
    proxy.ProxyAudioBitRate = texts.Int32(ClipPath::ProxyAudioBitRate);
    proxy.ProxySamplingRate = texts.Int32(ClipPath::ProxySamplingRate);
}

void CountProxyChannels(const ClipTexts& texts, P2Proxy& proxy) {
    constexpr std::size_t kMaskBits = 64;
    const std::size_t count = texts.Count(ClipList::ProxyAudio);
    proxy.ProxyAudioChannels = static_cast<std::int32_t>(count) - 1;
    for (std::size_t i = 0; i < std::min(count, kMaskBits); ++i) {
        proxy.ProxyAudioMask |= std::uint64_t{1} << i;
    }
}

} // namespace

void ReadSharedFields(const ClipTexts& texts, _tag_P2Clip& clip) {
    ReadTables(texts, clip);
    if (clip.UserClipName.IsEmpty()) {
        clip.UserClipName = clip.ClipName;
    }
    clip.ClipIdDigit = platform::ToInt32(clip.GlobalClipID.Mid(kIdDigit, 1).View());
    ReadDates(texts, clip);
    ReadMemos(texts, clip);
    ReadProxy(texts, clip.Proxy);
    CountProxyChannels(texts, clip.Proxy);
}

void RemoveRepeatedMemos(CArray<_tag_P2Memo>& memos) {
    std::unordered_set<std::int32_t> seen;
    std::int64_t kept = 0;
    for (std::int64_t i = 0; i < memos.GetSize(); ++i) {
        if (!seen.insert(memos[i].Offset).second) {
            continue;
        }
        if (kept != i) {
            memos[kept] = memos[i];
        }
        ++kept;
    }
    memos.RemoveAt(kept, memos.GetSize() - kept);
}

} // namespace nqp2::clips
