// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/P2Clip.h"

void _tag_P2Clip::Reset() {
    GlobalClipGuid = GUID();
    GlobalClipID.Empty();
    CodecName.Empty();
    ActivePixel = 0;
    ActiveLine = 0;
    BitDepth = 0;
    ExtraPath.Empty();
    IconPath.Empty();
    VideoPath.Empty();
    for (CString& path : AudioPath) {
        path.Empty();
    }
    XmlPath.Empty();
    ProxyPath.Empty();
    ProxyVideoCodecName.Empty();
    Proxy = nqp2::P2Proxy();
    AvcIntraClass50 = 0;
    CodecClass.Empty();
    ClipIdDigit = -1;
    Reserved276 = 0;
    Duration = 0;
    UnusedOffset = 0;
    Reserved288 = 0;
    AudioStartByteOffset = 0;
    AudioDataSize = 0;
    VideoStartByteOffset = 0;
    VideoDataSize = 0;
    EssenceMask = 0;
    TopClipGuid = GUID();
    NextClipGuid = GUID();
    PreviousClipGuid = GUID();
    OffsetInShot = 0;
    FrameRate.Empty();
    StartDate.Empty();
    EndDate.Empty();
    ClipName.Empty();
    AspectRatio.Empty();
    Memos.RemoveAll();
    UserClipName.Empty();
    StartTimecode = 0;
    DropFrame = 1;
    SourceKind = 0;
}
