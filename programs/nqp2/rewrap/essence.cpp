// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/rewrap/essence.h"

#include "nqp2/clip_cells.h"
#include "nqp2/rewrap/file_facts.h"
#include "nqp2/timeline/clip_facts.h"
#include "nqp2/worker_session.h"
#include "NQP2ParserU/ClipTimes.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <algorithm>
#include <new>

namespace nqp2::rewrap {
namespace {

using tool::CardScan;
using tool::Failure;

void RequireWhole(const ClipFile& file) {
    const std::string path = tool::OutputPath(file.path);
    switch (file.state) {
    case ClipFileState::Missing:
        throw Failure(path, "is missing", "");
    case ClipFileState::Empty:
        throw Failure(path, "is empty", "");
    case ClipFileState::Short:
        throw Failure(path, "is cut off",
                      fmt::format("{} of {} bytes", file.size, file.promisedSize));
    case ClipFileState::Present:
        break;
    }
}

void AddFile(const ClipFile& file, Essence& essence) {
    const std::string name = BytesFromText(essence.name);
    RequireWhole(file);
    const CString path = tool::WorkerPath(tool::OutputPath(file.path));
    essence.bytes += file.size;
    if (file.role == ClipFileRole::Audio) {
        if (file.number != essence.sounds.GetSize()) {
            throw Failure(name, fmt::format("has sound for channel {}", file.number + 1),
                          fmt::format("and none for channel {}", essence.sounds.GetSize() + 1));
        }
        essence.sounds.Add(path);
    } else if (essence.video.IsEmpty()) {
        essence.video = path;
    } else {
        throw Failure(name, "has more than one file of pictures", tool::OutputPath(file.path));
    }
}

void AddFiles(const CardScan& card, const _tag_P2Clip& clip, Essence& essence) {
    CArray<ClipFile> files;
    if (!card.files->Read(clip, files)) {
        throw std::bad_alloc();
    }
    for (const ClipFile& file : files) {
        if (file.role == ClipFileRole::Video || file.role == ClipFileRole::Audio) {
            AddFile(file, essence);
        }
    }
    if (essence.video.IsEmpty()) {
        throw Failure(BytesFromText(clip.ClipName), "has no file of pictures", "");
    }
}

void AddTimes(const _tag_P2Clip& clip, Essence& essence) {
    const FrameRate told = timeline::RateOf(clip);
    essence.dropFrame = clip.DropFrame != 0 && essence.rate.droppedNumbers != 0;
    if (essence.rate.frames == 0) {
        return;
    }
    // Records of streams count at the rate of the shot, however often files repeat its pictures.
    const FrameRate& counted = essence.isStream ? told : essence.rate;
    essence.frames = static_cast<std::uint32_t>(
        timeline::Rescaled(std::max(clip.Duration, 0), counted, essence.rate));
    if (!ClipTimecode(clip).IsEmpty()) {
        essence.start = timeline::StartOfPictures(clip, essence.rate);
    }
}

void AddMemos(const ClipMetadata& metadata, Essence& essence) {
    for (const MemoMetadata& memo : metadata.memos) {
        essence.memos.push_back(
            {memo.offset, BytesFromText(memo.person), BytesFromText(memo.text)});
    }
    std::stable_sort(essence.memos.begin(), essence.memos.end(),
                     [](const timeline::Memo& left, const timeline::Memo& right) {
                         return left.frame < right.frame;
                     });
}

} // namespace

CString Essence::StartText() const {
    return start < 0 ? CString() : FrameTimecode(start, rate, dropFrame);
}

Essence EssenceReader::Of(const _tag_P2Clip& clip) {
    const CardScan& card = m_scans.CardOf(clip);
    Essence essence;
    essence.name = clip.ClipName;
    if (!IsOnCard(clip, card.kind)) {
        throw Failure(BytesFromText(clip.ClipName), "is a file that plays as it is",
                      "only clips of P2 and AVCHD cards are made into one");
    }
    AddFiles(card, clip, essence);
    ClipMetadata metadata;
    CString problem;
    if (MetadataOf(card).Read(clip, metadata, problem) == MetadataStatus::Unreadable) {
        essence.remark = BytesFromText(clip.ClipName) +
                         ": memos and names are left out: " + BytesFromText(problem);
    }
    essence.isStream = card.kind == CardKind::Avchd;
    essence.isIntra = IsIntra(clip);
    essence.picture = PictureEssence(clip);
    essence.codec = TextFromBytes(tool::CodecAndClass(clip));
    essence.rate = RateOfFile(clip, metadata);
    essence.isInterlaced = IsCodedInterlaced(clip);
    ReadAspect(clip.AspectRatio, essence.aspectWidth, essence.aspectHeight);
    AddTimes(clip, essence);
    const ClipTold told = card.ToldOf(clip);
    essence.start = told.startTimecode ? essence.start : -1;
    essence.title = tool::OwnTitle(clip);
    const CString recorded = told.startDate ? clip.StartDate : CString();
    essence.date = BytesFromText(IsoDate(
        metadata.shoot.startDate.IsEmpty() ? recorded : metadata.shoot.startDate, told.startZone));
    essence.soundTexts = SoundTexts(clip, metadata, static_cast<int>(essence.sounds.GetSize()));
    AddMemos(metadata, essence);
    return essence;
}

ClipMetadataReader& EssenceReader::MetadataOf(const CardScan& card) {
    std::unique_ptr<ClipMetadataReader>& reader = m_readers[&card];
    if (reader == nullptr) {
        reader = std::make_unique<ClipMetadataReader>(card.card.Root());
    }
    return *reader;
}

} // namespace nqp2::rewrap
