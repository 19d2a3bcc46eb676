// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/clip_facts.h"

#include "catalogue/card_state.h"
#include "catalogue/medium.h"
#include "catalogue/words.h"
#include "NQP2ParserU/ClipFiles.h"
#include "NQP2ParserU/ClipTimes.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/TextBytes.h"
#include "offload/mhl/hash_format.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace nqp2::catalogue {
namespace {

/// Before what stands for an identifier.
const std::string kMade = "made:";

constexpr std::array<const char*, 4> kFileStates = {"", "missing", "empty", "short"};

/// Lines, each once, of what is told.
class Lines {
public:
    void Add(const CString& text) {
        const std::string line = KeptText(text);
        if (!line.empty() && std::find(m_lines.begin(), m_lines.end(), line) == m_lines.end()) {
            m_lines.push_back(line);
        }
    }
    [[nodiscard]] std::string Text() const {
        std::string text;
        for (const std::string& line : m_lines) {
            text.append(text.empty() ? "" : "\n").append(line);
        }
        return KeptText(text);
    }

private:
    std::vector<std::string> m_lines;
};

std::string PeopleOf(const ClipMetadata& metadata) {
    Lines people;
    for (const CString* const person :
         {&metadata.shoot.shooter, &metadata.news.reporter, &metadata.access.creator,
          &metadata.access.lastUpdatePerson}) {
        people.Add(*person);
    }
    for (const MemoMetadata& memo : metadata.memos) {
        people.Add(memo.person);
    }
    return people.Text();
}

std::string MemosOf(const ClipMetadata& metadata) {
    Lines memos;
    memos.Add(metadata.news.purpose);
    memos.Add(metadata.news.object);
    for (const MemoMetadata& memo : metadata.memos) {
        memos.Add(memo.text);
    }
    return memos.Text();
}

std::string StartOf(const ClipFacts& facts) {
    const CString told = IsoDate(facts.metadata.shoot.startDate);
    const CString recorded = facts.told.startDate ? facts.clip.StartDate : CString();
    return KeptText(told.IsEmpty() ? IsoDate(recorded, facts.told.startZone) : told);
}

std::int64_t MillisecondsOf(const _tag_P2Clip& clip) {
    const FrameRate* const rate = FindFrameRate(clip.FrameRate);
    return rate == nullptr ? 0 : std::int64_t{clip.Duration} * 1000 * rate->seconds / rate->frames;
}

/// What stands for an identifier, the same for a copy: its files' names and sizes, and its record.
std::string MadeIdentity(const ClipFacts& facts, const std::string& start) {
    std::string told =
        KeptText(facts.clip.ClipName) + '\n' + start + '\n' + std::to_string(facts.clip.Duration);
    for (const ClipFile& file : facts.files) {
        const bool isEssence = file.role == ClipFileRole::Video || file.role == ClipFileRole::Audio;
        told += isEssence ? '\n' + std::to_string(file.size) : std::string();
    }
    mhl::Hasher hasher(mhl::HashFormat::Xxh128);
    hasher.Add(told);
    return kMade + hasher.Value().Text(mhl::HashFormat::Xxh128);
}

ClipRecord RecordOf(const ClipFacts& facts) {
    const _tag_P2Clip& clip = facts.clip;
    const ClipMetadata& metadata = facts.metadata;
    ClipRecord record;
    record.name = KeptText(clip.ClipName);
    record.title = KeptText(clip.UserClipName);
    record.start = StartOf(facts);
    record.frames = clip.Duration;
    record.milliseconds = MillisecondsOf(clip);
    record.rate = KeptText(clip.FrameRate);
    record.codec = KeptText(clip.CodecName);
    record.timecode = facts.told.startTimecode ? KeptText(ClipTimecode(clip)) : "";
    record.manufacturer = KeptText(metadata.device.manufacturer);
    record.camera = KeptText(metadata.device.modelName);
    record.cameraSerial = KeptText(metadata.device.serialNo);
    record.programme = KeptText(metadata.scenario.programName);
    record.scene = KeptText(metadata.scenario.sceneNo);
    record.take = KeptText(metadata.scenario.takeNo);
    record.place = KeptText(metadata.place.name);
    record.latitude = KeptText(metadata.place.latitude);
    record.longitude = KeptText(metadata.place.longitude);
    record.people = PeopleOf(metadata);
    record.memos = MemosOf(metadata);
    record.identity = IdentityOf(clip.GlobalClipID);
    if (record.identity.empty()) {
        record.identity = MadeIdentity(facts, record.start);
    }
    record.words = WordsOfClip(record);
    return record;
}

void TakeSegment(const SegmentReference& told, std::string& identity, std::string& name,
                 std::string& serial) {
    identity = IdentityOf(told.globalClipID);
    name = KeptText(told.clipName);
    serial = KeptText(told.serialNo);
}

bool IsGap(const ClipFile& file) {
    CArray<ClipFile> alone;
    alone.Add(file);
    return !IsWhole(alone);
}

HoldingRecord HoldingOf(const ClipFacts& facts) {
    HoldingRecord holding;
    holding.name = KeptText(facts.clip.ClipName);
    holding.identifier = KeptText(facts.clip.GlobalClipID);
    for (const ClipFile& file : facts.files) {
        holding.bytes += static_cast<std::int64_t>(file.size);
        holding.fileGaps += IsGap(file) ? 1 : 0;
    }
    const RelationMetadata& relation = facts.metadata.relation;
    holding.offsetInShot = facts.clip.OffsetInShot;
    TakeSegment(relation.top, holding.topIdentity, holding.topName, holding.topSerial);
    TakeSegment(relation.previous, holding.previousIdentity, holding.previousName,
                holding.previousSerial);
    TakeSegment(relation.next, holding.nextIdentity, holding.nextName, holding.nextSerial);
    return holding;
}

} // namespace

CardClip ClipOf(const ClipFacts& facts) {
    return {RecordOf(facts), HoldingOf(facts)};
}

std::vector<GapRecord> FileGapsOf(const ClipFacts& facts, const std::string& root) {
    std::vector<GapRecord> gaps;
    for (const ClipFile& file : facts.files) {
        if (IsGap(file)) {
            std::string path = PosixPath(file.path);
            path.erase(0, path.starts_with(root + '/') ? root.size() + 1 : 0);
            gaps.push_back({KeptText(facts.clip.ClipName), "file", StoredPath(path),
                            kFileStates.at(static_cast<std::size_t>(file.state)), "", ""});
        }
    }
    return gaps;
}

std::string IdentifierOf(const ClipRecord& clip) {
    return clip.identity.starts_with(kMade) ? std::string() : clip.identity;
}

std::string IdentityOf(const CString& globalClipID) {
    return KeyText(Capitals(BytesFromText(globalClipID)));
}

} // namespace nqp2::catalogue
