// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/card_names.h"

#include "media/dates.h"
#include "NQP2ParserU/ClipMetadata.h"
#include "NQP2ParserU/TextBytes.h"

#include <algorithm>
#include <string_view>

namespace nqp2::offload {
namespace {

/// The day of a date text, "2026-11-21T08:05:09"; "" of any other text.
std::string DayOf(const CString& date) {
    constexpr std::size_t kDay = 10;
    const std::string text = BytesFromText(date).substr(0, kDay);
    const bool isDay = text.size() == kDay && text[4] == '-' && text[7] == '-';
    return isDay && std::count_if(text.begin(), text.end(),
                                  [](char c) { return c >= '0' && c <= '9'; }) == 8
               ? text
               : "";
}

/// Of the first shot; of cards whose clips tell none, of the oldest file. Both stay the same from
/// one run to the next.
std::string FirstDay(const GivenFolder& given, const FolderIndex& index) {
    std::string first;
    for (const CardContents& card : given.cards) {
        for (const _tag_P2Clip& clip : card.clips) {
            const std::string day = DayOf(clip.StartDate);
            first = first.empty() || (!day.empty() && day < first) ? day : first;
        }
    }
    if (!first.empty()) {
        return first;
    }
    std::optional<std::int64_t> oldest;
    for (mhl::NodeId node = 1; node < index.tree.Size(); ++node) {
        const auto time = index.tree.ModifiedOf(node);
        if (!index.tree.IsFolder(node) && time && (!oldest || *time < *oldest)) {
            oldest = time;
        }
    }
    return oldest ? DayOf(media::FileDateText(static_cast<std::time_t>(*oldest))) : "";
}

/// The programme that the first clip names which names one.
std::string ProjectOf(const GivenFolder& given) {
    for (const CardContents& card : given.cards) {
        ClipMetadataReader reader(card.card.root);
        ClipMetadata metadata;
        CString problem;
        for (const _tag_P2Clip& clip : card.clips) {
            if (reader.Read(clip, metadata, problem) == MetadataStatus::Read &&
                !metadata.scenario.programName.IsEmpty()) {
                return BytesFromText(metadata.scenario.programName);
            }
        }
    }
    return "";
}

} // namespace

NameFacts NameFactsOf(const std::string& path, const GivenFolder& given, const FolderIndex& index,
                      const CardIdentity& identity, const std::string& pattern) {
    NameFacts facts;
    facts.card = platform::NamePart(path);
    facts.serial = identity.serial;
    facts.date = FirstDay(given, index);
    facts.project = pattern.find("{project}") == std::string::npos ? "" : ProjectOf(given);
    return facts;
}

} // namespace nqp2::offload
