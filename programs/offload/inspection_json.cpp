// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/inspection_json.h"

#include "console/json_form.h"
#include "console/json_output.h"
#include "console/value.h"
#include "offload/arguments.h"
#include "offload/inspection.h"
#include "offload/inspection_output.h"
#include "offload/json_parts.h"

#include <fmt/chrono.h>

#include <functional>
#include <string>

namespace nqp2::offload {
namespace {

using mhl::NodeId;
using tool::Record;
using tool::Sequence;
using tool::Value;

/// A file with what it is and what it was.
Record ChangedRecord(const Inspection& inspection, NodeId node) {
    const mhl::Tree& present = inspection.index.tree;
    const mhl::Tree& expected = inspection.history.Expected();
    const std::string path = present.PathOf(node);
    const NodeId recorded = expected.Find(path);
    Record record{{"path", path}, {"size", present.SizeOf(node).value_or(0)}};
    if (const auto size = expected.SizeOf(recorded)) {
        record.push_back({"recordedSize", *size});
    }
    record.push_back({"hashes", HashList(present.HashesOf(node))});
    record.push_back({"recordedHashes", HashList(expected.HashesOf(recorded))});
    return record;
}

Sequence Paths(const std::vector<NodeId>& nodes, const mhl::Tree& tree) {
    return Each(nodes, [&tree](NodeId node) { return Record{{"path", tree.PathOf(node)}}; });
}

Record CountRecord(const Inspection& inspection) {
    Record record;
    for (const Count& each : CountsOf(inspection)) {
        record.push_back({each.name, each.value});
    }
    return record;
}

/// In UTC; "" for a time that is not known.
std::string TimeOf(std::int64_t seconds) {
    return seconds == 0 ? "" : fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(seconds));
}

Record GenerationRecord(const mhl::Generation& generation) {
    return {{"number", generation.number},
            {"manifest", generation.name},
            {"whole", generation.isWhole},
            {"tool", generation.head.tool},
            {"host", generation.head.hostName},
            {"comment", generation.head.comment},
            {"created", TimeOf(generation.head.created)},
            {"c4", generation.c4.Text(mhl::HashFormat::C4)}};
}

Record AddedRecord(const mhl::AddedGeneration& added) {
    return {{"number", added.number},
            {"manifest", added.path},
            {"c4", added.c4.Text(mhl::HashFormat::C4)},
            {"root", FolderHashList(added.root)}};
}

void AddSum(Record& document, const Inspection& inspection) {
    const double rate = static_cast<double>(inspection.bytesRead) /
                        (inspection.seconds > 0 ? inspection.seconds : 1);
    Append(document, {{"files", inspection.filesRead},
                      {"bytes", inspection.bytesRead},
                      {"seconds", inspection.seconds},
                      {"rate", rate},
                      {"counts", CountRecord(inspection)},
                      {"root", FolderHashList(inspection.index.tree.FolderHashesOf(mhl::kScope))},
                      {"generations", Each(inspection.history.Generations(), GenerationRecord)}});
}

Value ListOfFindings(const Inspection& inspection) {
    return Each(inspection.history.Found().Kept(), [](const mhl::Finding& each) {
        return Record{{"fault", each.isFault},
                      {"file", each.file},
                      {"line", each.line},
                      {"sentence", each.sentence}};
    });
}

void AddFound(Record& document, const Inspection& inspection) {
    const mhl::Comparison& found = inspection.comparison;
    const mhl::Tree& present = inspection.index.tree;
    const mhl::Tree& expected = inspection.history.Expected();
    const auto changed = [&](NodeId node) { return ChangedRecord(inspection, node); };
    const auto renamed = [&](const mhl::Renamed& each) {
        return Record{{"path", present.PathOf(each.now)},
                      {"previousPath", expected.PathOf(each.before)}};
    };
    Append(document, {{"history", ListOfFindings(inspection)},
                      {"changed", Each(found.changed, changed)},
                      {"unreadableFolders", OddList(inspection.index.unread)},
                      {"unreadable", OddList(inspection.unreadable)},
                      {"unproven", Paths(found.unproven, present)},
                      {"missing", Paths(found.missing, expected)},
                      {"missingFolders", Paths(found.missingFolders, expected)},
                      {"changedFolders", Paths(found.changedFolders, present)},
                      {"renamed", Each(found.renamed, renamed)},
                      {"new", Paths(found.added, present)},
                      {"newFolders", Paths(found.addedFolders, present)},
                      {"leftOut", OddList(inspection.index.leftOut)},
                      {"ignored", OddList(inspection.index.ignored)}});
}

} // namespace

void PrintInspectionJson(tool::Console& console, const Arguments& arguments,
                         const Inspection& inspection, const Added& added) {
    const bool isSeal = arguments.operation == Operation::Seal;
    Record document{{"format", std::string(isSeal ? "nqp2-seal" : "nqp2-verify")},
                    {"version", tool::kJsonVersion}};
    PutPath(document, "folder", "folderBytes", inspection.folder);
    document.push_back({"well", inspection.IsClean() && added.whyNot.empty()});
    AddSum(document, inspection);
    AddFound(document, inspection);
    if (added.isWished) {
        document.push_back({"added", Each(added.generations, AddedRecord)});
        document.push_back({"notAdded", added.whyNot});
    }
    tool::PrintJson(console, document);
}

} // namespace nqp2::offload
