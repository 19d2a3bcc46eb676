// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/Guid.h"
#include "NQP2ParserU/OleDateTime.h"

#include <cstddef>
#include <cstdint>

/// A text memo of a clip, with the description of its voice recording when it has one.
struct _tag_P2Memo {
    std::int32_t Offset = 0;      ///< frames from the clip's start
    CString Person;               ///< author
    CString Text;                 ///< what is noted
    CString VoiceFormat = L"WAV"; ///< file format of the voice recording, as the metadata write it
    std::int32_t VoiceSamplingRate = 1200; ///< kept unscaled: hosts rely on it
    std::int32_t VoiceBitsPerSample = 16;  ///< bits a sample
    std::int32_t VoiceChannelFlag = 1;     ///< no reader sets it
};

namespace nqp2 {

/// A clip's low-resolution companion file.
struct P2Proxy {
    CString ProxyFilePath;        ///< full path with the extension of the format, when it exists
    std::int32_t ProxyFormat = 0; ///< 1 MP4, 2 MOV, 0 other
    CString ProxyExt;             ///< ".MP4" or ".MOV"
    std::uint64_t ProxyAudioMask = 0;    ///< bit i: proxy audio channel i
    std::int32_t ProxyVideoCodec = 0;    ///< 1 AVC, 2 MPEG-4, 0 other
    std::int32_t ProxyVideoBitRate = 0;  ///< bits a second
    CString ProxyFrameRate;              ///< text as on the card, "29.97p"
    std::int32_t ProxyResolution = -1;   ///< 0 QVGA to 7 1920x1080, -1 other
    CString ProxyAspectRatio;            ///< text as on the card, "16:9"
    std::int32_t ProxyAudioCodec = 0;    ///< 1 AAC, 2 LPCM, 0 other
    std::int32_t ProxyAudioBitRate = 0;  ///< bits a second
    std::int32_t ProxySamplingRate = 0;  ///< samples a second
    std::int32_t ProxyAudioChannels = 0; ///< number of audio descriptions less one
};

} // namespace nqp2

/// One clip of a card. Field order and widths are part of the interface. Paths are interface
/// paths; an absent file is "". Frame counts are frames of the clip's own rate.
struct NQP2_API _tag_P2Clip {
    /// Places for audio files in a record.
    static constexpr int kAudioSlots = 8;

    COleDateTime ShootStartTime; ///< shooting start without its zone
    GUID GlobalClipGuid;         ///< binary form of GlobalClipID
    CString GlobalClipID;        ///< identifier text (SMPTE ST 330 UMID in hexadecimal)
    CString CodecName;           ///< class appended for AVC-LongG material

    ///@{
    /// Active pixels a line, and active lines. Of P2 clips told for AVC-LongG and AVC-Intra codecs
    /// alone; else 0.
    std::int32_t ActivePixel;
    std::int32_t ActiveLine;
    ///@}
    std::int32_t BitDepth; ///< bits a sample of the picture; 0 when not told, as ActivePixel
    CString ExtraPath;     ///< spare
    CString IconPath;      ///< "" when there is none, as all paths
    CString VideoPath;     ///< the picture; of AVCHD and camera files the sound too
    CString AudioPath[kAudioSlots]; ///< index = channel number
    CString XmlPath;                ///< the clip's metadata file
    CString ProxyPath;              ///< ".MP4" proxy when it exists
    CString ProxyVideoCodecName;    ///< text as on the card
    nqp2::P2Proxy Proxy;            ///< the small copy, in detail
    std::int32_t AvcIntraClass50;   ///< 0 or 1
    CString CodecClass;             ///< "Class" attribute of the codec
    std::int32_t ClipIdDigit;       ///< digit at index 31 of GlobalClipID, or -1
    std::uint32_t Reserved276;      ///< kept zero
    std::int32_t Duration;          ///< frames
    std::int32_t UnusedOffset;      ///< as in the metadata; 0 when not told
    std::uint32_t Reserved288;      ///< kept zero

    ///@{
    /// Place of the essence in its file, in bytes; of sound in the first channel's. 0 when not
    /// told.
    std::int64_t AudioStartByteOffset;
    std::int64_t AudioDataSize;
    std::int64_t VideoStartByteOffset;
    std::int64_t VideoDataSize;
    ///@}
    std::uint64_t EssenceMask; ///< bit 0 video, bit n (1 to 8) audio channel n-1
    GUID TopClipGuid;          ///< the take's first segment; all zero when the metadata name none
    GUID NextClipGuid;         ///< the order Top, Next, Previous is deliberate
    GUID PreviousClipGuid;     ///< see TopClipGuid
    std::int64_t OffsetInShot; ///< frames of the take before this clip
    GUID GlobalShotGuid;       ///< identifier that all segments of a take share
    CString TopClipName;       ///< file title of the take's first clip
    CString PreviousClipName;  ///< the order Top, Previous, Next is deliberate
    CString NextClipName;      ///< see TopClipName

    ///@{
    /// Serial number of the card that holds that segment.
    CString TopSerialNo;
    CString PreviousSerialNo;
    CString NextSerialNo;
    ///@}
    CString FrameRate; ///< text as on the card: "59.94i" counts the fields
    CString StartDate; ///< local text without zone
    CString EndDate;   ///< in the same form
    CString ClipName; ///< title of the metadata file for a scanned clip, else what the metadata say
    CString AspectRatio;        ///< text as on the card, "16:9"
    CArray<_tag_P2Memo> Memos;  ///< of the same offset only the first
    CString AudioBitsPerSample; ///< text as on the card, "16"
    CString UserClipName;       ///< the user's; ClipName where there is none
    std::int32_t StartTimecode; ///< frame count
    std::int32_t DropFrame;     ///< 1 = drop-frame timecode
    std::int32_t SourceKind;    ///< 0 P2 metadata, 1 AVCHD reader

    /// A fresh record, see Reset.
    _tag_P2Clip() { Reset(); }

    /// Gives every field its fresh value except ShootStartTime, GlobalShotGuid, the three relation
    /// names, the three serial numbers and AudioBitsPerSample, which keep what they hold: a scan
    /// reuses one record and hosts rely on the carry-over.
    void Reset();
};

static_assert(sizeof(void*) != 8 || offsetof(_tag_P2Clip, Reserved276) == 276);
static_assert(sizeof(void*) != 8 || offsetof(_tag_P2Clip, Reserved288) == 288);
