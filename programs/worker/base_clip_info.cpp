// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/card_requests.h"

#include "clips/clip_reader.h"
#include "clips/clip_texts.h"
#include "clips/essence_lookup.h"
#include "copy/digest.h"
#include "copy/failure.h"
#include "media/card_layout.h"
#include "media/identifier.h"
#include "media/rates.h"
#include "media/timecode.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/WorkerFields.h"
#include "platform/case_fold.h"
#include "platform/file_system.h"
#include "platform/place.h"
#include "platform/unicode.h"
#include "worker/base/card_folder.h"
#include "worker/base/media_file.h"
#include "worker/clip_metadata.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

namespace nqp2::worker {
namespace {

using platform::TextFromUtf8;

using Fields = BaseClipFields<NQP2BaseClipInfo>;

constexpr int kMostAudioPaths = 8;

/// Frames in a thousand seconds, rounded.
std::int64_t Thousandths(const FrameRate& rate) {
    return (std::int64_t{rate.frames} * 1000 + rate.seconds / 2) / rate.seconds;
}

CString TitleOf(const std::string& path) {
    std::string name = platform::NamePart(path);
    name.resize(std::min(name.find_last_of('.'), name.size()));
    return platform::TextFromNameBytes(name);
}

void Default(CString& text, const CString& value) {
    if (text.IsEmpty()) {
        text = value;
    }
}

/// The same for the same content, wherever it lies: files without identifiers are told apart by
/// their size and first bytes.
GUID IdentifyByContent(const std::string& path) {
    constexpr std::size_t kBytes = std::size_t{1} << 20U;
    platform::FileInfo info;
    copy::Require(platform::Files().Stat(path, info), "read", path);
    std::string head;
    copy::Require(platform::ReadHead(platform::Files(), path, kBytes, head), "read", path);
    copy::Digest digest(info.size);
    digest.Add(head);
    GUID identifier;
    const copy::Digest::Bytes value = digest.Value();
    static_assert(sizeof value == sizeof identifier);
    std::memcpy(static_cast<void*>(&identifier), value.data(), sizeof identifier);
    return identifier;
}

CString AspectText(const MediaFacts& facts) {
    if (facts.aspectWidth <= 0 || facts.aspectHeight <= 0) {
        return {};
    }
    // Pixel shapes of standard definition do not meet 4:3 and 16:9 exactly.
    constexpr double kTolerance = 0.03;
    const double aspect =
        static_cast<double>(facts.aspectWidth) / static_cast<double>(facts.aspectHeight);
    const auto near = [&](double wanted) { return std::abs(aspect / wanted - 1) < kTolerance; };
    if (near(16.0 / 9)) {
        return L"16:9";
    }
    if (near(4.0 / 3)) {
        return L"4:3";
    }
    CString text;
    text.Format(L"%d:%d", facts.aspectWidth, facts.aspectHeight);
    return text;
}

void AddAudioPaths(const CString& path, int channels, CStringArray& paths) {
    for (int i = 0; i < std::min(channels, kMostAudioPaths); ++i) {
        paths.Add(path);
    }
}

std::int32_t StartFrame(const MediaFacts& facts, const CString& rate) {
    const bool dropFrame = facts.timecode.find(';') != std::string::npos;
    return media::ClipFrameCount(TextFromUtf8(facts.timecode).View(), rate.View(), dropFrame);
}

/// "2026-11-21T08:05:09" of an ISO 8601 date with or without fraction and zone.
CString DateText(const std::string& date) {
    constexpr std::size_t kLength = 19;
    return TextFromUtf8(std::string_view(date).substr(0, kLength));
}

void DescribeMediaFile(const CString& path, const std::string& file,
                       const std::function<bool()>& goesOn, Fields info) {
    const MediaFacts facts = ReadMediaFile(file, goesOn);
    const FrameRate* const known = media::FindRate(facts.rate, facts.interlaced);
    const CString rate = known != nullptr ? known->text : L"";
    Default(info.clipName, TitleOf(file));
    Default(info.date, DateText(facts.date));
    info.framesIn1000Seconds = Thousandths(facts.rate);
    info.duration = facts.frames;
    info.startFrame = StartFrame(facts, rate);
    info.codec = TextFromUtf8(facts.codec);
    info.frameRate = rate;
    info.aspectRatio = AspectText(facts);
    info.videoPath = path;
    AddAudioPaths(path, facts.audioChannels, info.audioPaths);
    info.userClipName = facts.title.empty() ? info.clipName : TextFromUtf8(facts.title);
    info.SetSize(facts.width, facts.height);
    info.identifier = media::GuidFromIdentifier(TextFromUtf8(facts.identifier));
    if (info.identifier == GUID()) {
        info.identifier = IdentifyByContent(file);
    }
}

/// The contents folder above CLIP/name.XML, as records show it.
CString ContentsAbove(const std::string& file) {
    const std::string clips = platform::FolderPart(file);
    const std::string above = platform::FolderPart(clips.substr(0, clips.size() - 1));
    const std::string contents = above.substr(0, above.size() - 1);
    const std::string card = platform::FolderPart(contents);
    const platform::Place root = platform::Place::At(card.empty() ? "/" : card);
    return root.PathOf(platform::TextFromNameBytes(platform::NamePart(contents))) + L"\\";
}

_tag_P2Clip ReadClip(const std::string& file) {
    CMarkupMSXML xml;
    if (xml.LoadXml(platform::TextFromNameBytes(file)) == 0) {
        throw copy::Failure("Cannot read " + file + ": " + Shown(xml.GetError()));
    }
    clips::TextPool pool;
    const clips::ClipTexts texts(*xml.GetDocumentPtr(), pool);
    if (!texts.HasContent()) {
        throw NotMetadata(file);
    }
    const clips::EssenceLookup essence(platform::Place(ContentsAbove(file)),
                                       clips::EssenceLookup::Mode::OneClip);
    _tag_P2Clip clip;
    clip.ClipName = TitleOf(file);
    clips::ReadScannedClip(texts, essence, clip);
    return clip;
}

void DescribeP2Clip(const std::string& file, Fields info) {
    const _tag_P2Clip clip = ReadClip(file);
    Default(info.clipName, clip.ClipName);
    Default(info.date, clip.StartDate);
    info.identifier = clip.GlobalClipGuid;
    const FrameRate* const rate = media::FindRate(clip.FrameRate.View());
    info.framesIn1000Seconds = rate != nullptr ? Thousandths(*rate) : 0;
    info.duration = clip.Duration;
    info.startFrame = clip.StartTimecode;
    info.codec = clip.CodecName;
    info.frameRate = clip.FrameRate;
    info.aspectRatio = clip.AspectRatio;
    info.videoPath = clip.VideoPath;
    for (const CString& path : clip.AudioPath) {
        if (!path.IsEmpty()) {
            info.audioPaths.Add(path);
        }
    }
    info.userClipName = clip.UserClipName;
    info.SetSize(clip.ActivePixel, clip.ActiveLine);
    if (info.identifier == GUID()) {
        // The video stays the same when an export changes names in the metadata.
        info.identifier = IdentifyByContent(FindFile(clip.VideoPath).value_or(file));
    }
}

} // namespace

NQP2BaseClipInfo DescribeClip(const CString& path, const std::function<bool()>& goesOn,
                              NQP2BaseClipInfo asked) {
    const std::string file = FindFile(path).value_or("");
    if (!file.starts_with('/')) {
        throw copy::Failure("There is no file " + Shown(path) + ".");
    }
    asked.texts.RemoveAll();
    if (platform::FoldNameCase(file).ends_with(media::kMetadataFiles.extension.Bytes())) {
        DescribeP2Clip(file, Fields(asked));
    } else {
        DescribeMediaFile(path, file, goesOn, Fields(asked));
    }
    return asked;
}

} // namespace nqp2::worker
