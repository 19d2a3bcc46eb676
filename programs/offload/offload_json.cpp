// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/offload_json.h"

#include "console/json_form.h"
#include "offload/json_parts.h"

#include <fmt/format.h>

#include <array>
#include <cstddef>
#include <string>
#include <utility>

namespace nqp2::offload {
namespace {

using tool::List;
using tool::Record;
using tool::Value;

constexpr std::array<const char*, 4> kStateWords = {"new", "unfinished", "finished", "taken"};

List Texts(const std::vector<std::string>& texts) {
    List list;
    for (const std::string& text : texts) {
        list.emplace_back(text);
    }
    return list;
}

Record MediumRecord(const platform::MediumFacts& medium) {
    return {{"disks", Texts(medium.disks)},
            {"server", medium.server},
            {"fileSystem", medium.fileSystem}};
}

Record CardRecord(const Plan& plan) {
    const FolderIndex& index = plan.index;
    const std::uint64_t folders = index.tree.Size() - 1 - index.tree.FileCount();
    Record record;
    PutPath(record, "path", "pathBytes", plan.card);
    Append(record, {{"kind", plan.kind},
                    {"serial", plan.identity.serial},
                    {"partOf", plan.partOf},
                    {"files", std::uint64_t{index.tree.FileCount()}},
                    {"folders", folders},
                    {"bytes", index.bytes},
                    {"hasList", plan.history.has_value()},
                    {"medium", MediumRecord(plan.medium)}});
    return record;
}

Record CompletenessRecord(const Completeness& found) {
    List gaps;
    for (const Gap& gap : found.gaps) {
        gaps.emplace_back(Record{
            {"of", std::string(GapWord(gap.of))}, {"name", gap.name}, {"problem", gap.problem}});
    }
    return {{"clips", found.clips},
            {"takes", found.takes},
            {"editLists", found.editLists},
            {"gaps", std::move(gaps)}};
}

Record TargetRecord(const Target& target) {
    Record record;
    PutPath(record, "folder", "folderBytes", target.folder);
    PutPath(record, "path", "pathBytes", target.path);
    Append(record, {{"before", std::string(StateWord(target.state))},
                    {"medium", MediumRecord(target.medium)}});
    return record;
}

double RateOf(const CopyOutcome& copy) {
    return copy.seconds > 0 ? static_cast<double>(copy.bytes) / copy.seconds : 0;
}

List ListsOf(const CopyOutcome& copy) {
    List lists;
    for (const mhl::AddedGeneration& each : copy.lists) {
        lists.emplace_back(Record{{"number", each.number},
                                  {"manifest", each.path},
                                  {"c4", each.c4.Text(mhl::HashFormat::C4)}});
    }
    return lists;
}

Record CopyRecord(const Plan& plan, const Target& target, const CopyOutcome& copy) {
    Record record = TargetRecord(target);
    const mhl::FolderHashes root =
        copy.proof.isSealed ? plan.index.tree.FolderHashesOf(mhl::kScope) : mhl::FolderHashes();
    Append(record, {{"proven", IsProven(copy.proof)},
                    {"holdsAll", copy.proof.holdsAll},
                    {"ended", copy.ended},
                    {"notSealed", copy.notSealed},
                    {"files", copy.files},
                    {"bytes", copy.bytes},
                    {"copied", copy.copied},
                    {"wereThere", copy.wereThere},
                    {"copiedAnew", copy.copiedAnew},
                    {"seconds", copy.seconds},
                    {"rate", RateOf(copy)},
                    {"root", FolderHashList(root)},
                    {"lists", ListsOf(copy)},
                    {"sums", copy.sums},
                    {"counts", Record{{"failures", copy.failures.Count()},
                                      {"setAside", copy.setAside.Count()},
                                      {"strange", copy.strange.Count()}}},
                    {"failures", OddList(copy.failures)},
                    {"setAside", OddList(copy.setAside)},
                    {"strange", OddList(copy.strange)}});
    return record;
}

List TargetList(const Plan& plan, const Outcome* outcome) {
    List list;
    for (std::size_t i = 0; i < plan.targets.size(); ++i) {
        const Target& target = plan.targets[i];
        list.emplace_back(outcome == nullptr ? TargetRecord(target)
                                             : CopyRecord(plan, target, outcome->copies[i]));
    }
    return list;
}

Record VerdictRecord(const Outcome& outcome) {
    return {{"safeToFormat", outcome.verdict.isSafe},
            {"independent", std::uint64_t{outcome.verdict.independent}},
            {"missing", Texts(outcome.verdict.missing)},
            {"text", VerdictText(outcome.verdict)}};
}

/// Of the lists, which tell no more than the first of many entries.
Record CountRecord(const Plan& plan, const Outcome* outcome) {
    Record counts{{"leftOut", plan.index.leftOut.Count()},
                  {"unread", plan.index.unread.Count()},
                  {"ignored", plan.index.ignored.Count()}};
    if (outcome != nullptr) {
        Append(counts, {{"cannotRead", outcome->cannotRead.Count()},
                        {"readOtherwise", outcome->readOtherwise.Count()},
                        {"changes", outcome->changes.Count()}});
    }
    return counts;
}

void AddOutcome(Record& document, const Outcome& outcome) {
    Append(document, {{"cancelled", outcome.wasCancelled},
                      {"filesRead", outcome.filesRead},
                      {"bytesRead", outcome.bytesRead},
                      {"seconds", outcome.seconds},
                      {"readTwice", outcome.card.isReadTwice},
                      {"cannotRead", OddList(outcome.cannotRead)},
                      {"readOtherwise", OddList(outcome.readOtherwise)},
                      {"changes", OddList(outcome.changes)},
                      {"againstList", Texts(outcome.againstHistory)},
                      {"verdict", VerdictRecord(outcome)}});
}

} // namespace

const char* StateWord(TargetState state) {
    return kStateWords.at(static_cast<std::size_t>(state));
}

Record OffloadRecord(const Plan& plan, const Outcome* outcome) {
    Record document{{"format", std::string("nqp2-offload")},
                    {"version", tool::kJsonVersion},
                    {"dryRun", outcome == nullptr},
                    {"card", CardRecord(plan)},
                    {"name", plan.name},
                    {"warnings", Texts(plan.warnings)},
                    {"counts", CountRecord(plan, outcome)},
                    {"leftOut", OddList(plan.index.leftOut)},
                    {"unread", OddList(plan.index.unread)},
                    {"ignored", OddList(plan.index.ignored)},
                    {"patterns", Texts(plan.ignored.Patterns())},
                    {"completeness", CompletenessRecord(plan.completeness)},
                    {"targets", TargetList(plan, outcome)}};
    if (outcome != nullptr) {
        AddOutcome(document, *outcome);
    }
    return document;
}

} // namespace nqp2::offload
