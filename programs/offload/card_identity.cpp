// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/card_identity.h"

#include "NQP2ParserU/CardSerial.h"
#include "NQP2ParserU/TextBytes.h"
#include "offload/mhl/hash_format.h"
#include "platform/case_fold.h"

#include <algorithm>
#include <ctime>
#include <set>

namespace nqp2::offload {
namespace {

struct Member {
    const char* name;
    std::string CardIdentity::*value;
};
constexpr Member kMembers[] = {{"cardSerial", &CardIdentity::serial},
                               {"cardClips", &CardIdentity::clips},
                               {"cardFiles", &CardIdentity::files}};

std::string DigestText(mhl::Hasher& hasher) {
    return hasher.Value().Text(mhl::HashFormat::Xxh128);
}

/// Texts behind each other, so that no two lists give the same bytes.
void AddText(mhl::Hasher& hasher, std::string_view text) {
    hasher.Add(std::to_string(text.size()) + ':');
    hasher.Add(text);
}

/// A time as every system tells it of the same file: FAT counts in steps of two seconds, and its
/// local times are shifted by quarters of an hour.
std::string TimeMark(std::time_t time) {
    constexpr std::time_t kStep = 2;
    constexpr std::time_t kShift = 15 * 60;
    return std::to_string((time % kShift + kShift) % kShift / kStep);
}

std::string FilesDigest(const FolderIndex& index) {
    mhl::Hasher hasher(mhl::HashFormat::Xxh128);
    const mhl::Tree& tree = index.tree;
    for (mhl::NodeId node = tree.FirstInPostOrder(mhl::kScope); node != mhl::kNoNode;
         node = tree.NextInPostOrder(node, mhl::kScope)) {
        AddText(hasher, tree.PathOf(node));
        if (!tree.IsFolder(node)) {
            AddText(hasher, std::to_string(tree.SizeOf(node).value_or(0)));
            AddText(hasher, TimeMark(tree.ModifiedOf(node).value_or(0)));
        }
    }
    return DigestText(hasher);
}

std::string ClipsDigest(const GivenFolder& given) {
    std::set<std::string> identifiers;
    for (const CardContents& card : given.cards) {
        for (const _tag_P2Clip& clip : card.clips) {
            identifiers.insert(platform::FoldNameCase(BytesFromText(clip.GlobalClipID)));
        }
    }
    identifiers.erase("");
    if (identifiers.empty()) {
        return "";
    }
    mhl::Hasher hasher(mhl::HashFormat::Xxh128);
    for (const std::string& identifier : identifiers) {
        AddText(hasher, identifier);
    }
    return DigestText(hasher);
}

/// Of a card alone: several have none in common.
std::string SerialOf(const GivenFolder& given) {
    if (given.cards.size() != 1) {
        return "";
    }
    const CardContents& card = given.cards.front();
    const std::string told = BytesFromText(CardSerial(card.clips, card.lists));
    return told.empty() ? BytesFromText(card.card.serialNo) : told;
}

} // namespace

CardIdentity IdentityOf(const GivenFolder& given, const FolderIndex& index) {
    return {SerialOf(given), ClipsDigest(given), FilesDigest(index)};
}

std::vector<mhl::MetadataEntry> EntriesOf(const CardIdentity& identity) {
    std::vector<mhl::MetadataEntry> entries;
    for (const Member& member : kMembers) {
        entries.push_back({member.name, identity.*member.value});
    }
    return entries;
}

CardIdentity IdentityIn(const std::vector<mhl::MetadataEntry>& entries) {
    CardIdentity identity;
    for (const mhl::MetadataEntry& entry : entries) {
        for (const Member& member : kMembers) {
            if (entry.name == member.name) {
                identity.*member.value = entry.value;
            }
        }
    }
    return identity;
}

} // namespace nqp2::offload
