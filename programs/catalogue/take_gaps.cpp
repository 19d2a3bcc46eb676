// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/take_gaps.h"

#include "catalogue/clip_facts.h"
#include "catalogue/words.h"
#include "clips/takes.h"
#include "media/identifier.h"
#include "NQP2ParserU/CardSerial.h"
#include "NQP2ParserU/TextBytes.h"

#include <functional>
#include <unordered_map>
#include <vector>

namespace nqp2::catalogue {
namespace {

using OnHolding = std::function<void(HoldingRecord&)>;

void ForEachHolding(CardContents& contents, const OnHolding& onHolding) {
    for (CardClip& each : contents.read) {
        onHolding(each.holding);
    }
    for (HoldingRecord& each : contents.unchanged) {
        onHolding(each);
    }
}

clips::ClipRelation RelationOf(const HoldingRecord& holding) {
    const auto neighbour = [](const std::string& identity, const std::string& name,
                              const std::string& serial) {
        return clips::ClipRelation::Neighbour{TextFromBytes(identity), TextFromBytes(name),
                                              TextFromBytes(serial)};
    };
    return {TextFromBytes(holding.name),
            TextFromBytes(holding.identifier),
            holding.offsetInShot,
            neighbour(holding.topIdentity, holding.topName, holding.topSerial),
            neighbour(holding.previousIdentity, holding.previousName, holding.previousSerial),
            neighbour(holding.nextIdentity, holding.nextName, holding.nextSerial)};
}

CArray<Take> TakesOf(CardContents& contents) {
    std::vector<clips::ClipRelation> relations;
    ForEachHolding(contents, [&](HoldingRecord& holding) {
        const clips::ClipRelation relation = RelationOf(holding);
        if (clips::IsRelated(relation)) {
            relations.push_back(relation);
        }
    });
    return clips::FindTakes(relations);
}

/// The clip that says of a segment that it is there: the one before it, for the first the one
/// behind.
const CString& TellerOf(const Take& take, const MissingSegment& missing) {
    return take.segments[missing.before > 0 ? missing.before - 1 : 0];
}

} // namespace

void AddTakeGaps(CardContents& contents, const CArray<Take>& told, bool isP2) {
    const CArray<Take> takes = isP2 ? TakesOf(contents) : told;
    std::unordered_map<std::string, std::int64_t> counts;
    for (const Take& take : takes) {
        for (const MissingSegment& missing : take.missing) {
            if (take.segments.IsEmpty()) {
                continue;
            }
            const std::string clip = KeptText(TellerOf(take, missing));
            ++counts[clip];
            contents.gaps.push_back({clip, "segment", KeptText(missing.clipName), "missing",
                                     IdentityOf(missing.globalClipID), KeptText(missing.serialNo)});
        }
    }
    ForEachHolding(contents, [&](HoldingRecord& holding) {
        const auto count = counts.find(holding.name);
        holding.segmentGaps = count == counts.end() ? 0 : count->second;
    });
}

std::string SerialOf(const CardContents& contents, const CArray<tag_P2EDL>& lists) {
    CArray<_tag_P2Clip> clips;
    const auto guidOf = [](const std::string& identity) {
        return media::GuidFromIdentifier(std::string_view(identity));
    };
    const auto add = [&](const HoldingRecord& holding) {
        _tag_P2Clip clip;
        clip.GlobalClipGuid = guidOf(holding.identifier);
        clip.TopClipGuid = guidOf(holding.topIdentity);
        clip.TopSerialNo = TextFromBytes(holding.topSerial);
        clip.PreviousClipGuid = guidOf(holding.previousIdentity);
        clip.PreviousSerialNo = TextFromBytes(holding.previousSerial);
        clip.NextClipGuid = guidOf(holding.nextIdentity);
        clip.NextSerialNo = TextFromBytes(holding.nextSerial);
        clips.Add(std::move(clip));
    };
    for (const CardClip& each : contents.read) {
        add(each.holding);
    }
    for (const HoldingRecord& each : contents.unchanged) {
        add(each);
    }
    return KeptText(CardSerial(clips, lists));
}

} // namespace nqp2::catalogue
