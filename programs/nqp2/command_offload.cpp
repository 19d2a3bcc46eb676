// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/command.h"
#include "nqp2/program_words.h"

#include <cstdint>
#include <string>
#include <vector>

namespace nqp2::tool {
namespace {

constexpr const char* kProgram = "nqp2-offload";

struct OffloadOptions {
    std::string card;
    std::vector<std::string> targets;
    std::string name;
    std::vector<std::string> hashes;
    std::vector<std::string> sums;
    std::uint32_t copies = 0;
    std::string log;
    ProgressOptions progress;
    bool noVerifySource = false;
    bool dryRun = false;
    bool json = false;
};

struct SealOptions {
    std::string folder;
    std::vector<std::string> hashes;
    ProgressOptions progress;
    bool json = false;
};

struct VerifyOptions {
    std::string folder;
    ProgressOptions progress;
    bool append = false;
    bool json = false;
};

/// With what all commands take in the end. Comes back only by Failure.
Status Become(ProgramWords& words, bool json, const ProgressOptions& progress) {
    words.PutFlag("json", json);
    words.PutProgress(progress);
    return words.Become(kProgram);
}

Status RunOffload(Console& /*console*/, const OffloadOptions& options) {
    ProgramWords words("offload");
    words.Put("card", PathForProgram(options.card));
    for (const std::string& target : options.targets) {
        words.Put("to", PathForProgram(target));
    }
    words.PutGiven("name", options.name);
    words.PutEach("hash", options.hashes);
    words.PutEach("sums", options.sums);
    words.PutGiven("copies", options.copies == 0 ? "" : std::to_string(options.copies));
    words.PutGiven("log", options.log.empty() ? "" : PathForProgram(options.log));
    words.PutFlag("no-verify-source", options.noVerifySource);
    words.PutFlag("dry-run", options.dryRun);
    return Become(words, options.json, options.progress);
}

Status RunSeal(Console& /*console*/, const SealOptions& options) {
    ProgramWords words("seal");
    words.Put("folder", PathForProgram(options.folder));
    words.PutEach("hash", options.hashes);
    return Become(words, options.json, options.progress);
}

Status RunVerify(Console& /*console*/, const VerifyOptions& options) {
    ProgramWords words("verify");
    words.Put("folder", PathForProgram(options.folder));
    words.PutFlag("append", options.append);
    return Become(words, options.json, options.progress);
}

void AddHashOption(const Command& command, std::vector<std::string>& hashes) {
    command
        .RepeatedOption("--hash", hashes, "FORMAT",
                        "xxh128 (if left out), xxh3, xxh64, md5, sha1 or c4 (repeatable)")
        .OneOf(std::vector<std::string>{"xxh128", "xxh3", "xxh64", "md5", "sha1", "c4"});
}

} // namespace

void AddOffloadCommand(const Command& program) {
    const Command command =
        program.Add("offload", "Copy a whole card to one or more places, proven and sealed");
    OffloadOptions& options = command.Runs(RunOffload);
    command.CardArgument(options.card);
    command
        .RepeatedOption("--to", options.targets, "FOLDER",
                        "A folder that receives the copy as FOLDER/NAME (repeatable)")
        .Required();
    command.ValueOption("--name", options.name, "NAME",
                        "The copy's name; that of the card's folder if left out");
    AddHashOption(command, options.hashes);
    command
        .RepeatedOption("--sums", options.sums, "FORMAT",
                        "Write checksums as well: md5, as NAME.md5 beside the copy, for md5sum")
        .OneOf(std::vector<std::string>{"md5"});
    command
        .ValueOption("--copies", options.copies, "N",
                     "Exit with 4 when fewer than N independent copies are proven")
        .Between(1, 100);
    command.Flag("--no-verify-source", options.noVerifySource,
                 "Do not read the card a second time, and forfeit the verdict");
    command.ValueOption("--log", options.log, "FILE", "Write all that is told as JSON to a file");
    command.Flag("--dry-run", options.dryRun, "Tell what would be copied where, and copy nothing");
    command.JsonFlag(options.json);
    command.AddProgressOptions(options.progress);
    command.Example("nqp2 offload /media/card --to /raid/day1 --to /media/shuttle/day1");
    command.Note("A name may hold {card}, {serial}, {date}, {project} and {counter}.");
    command.Note(
        "Copied is the whole of what is given: every file and folder, whoever can read it.\n"
        "Left out and told are a desktop's litter, links, and names that no list of hashes\n"
        "can hold. A second run goes on with a copy that was not finished, or proves one\n"
        "again.");
    command.Note(
        "The card may be formatted when two copies on different disks, neither of them the\n"
        "card's own, were read back from there, the card was read twice the same, nothing\n"
        "of it changed and nothing was left out.");
    command.Statuses({{"0", "all that was asked for is proven"},
                      {"1", "it is not"},
                      {"2", "wrong usage"},
                      {"3", "nqp2-offload cannot be run"},
                      {"4", "fewer copies than --copies are on disks of their own"}});
}

void AddSealCommand(const Command& program) {
    const Command command =
        program.Add("seal", "Write the list of hashes of a folder, or continue the one it has");
    SealOptions& options = command.Runs(RunSeal);
    command.Argument("FOLDER", options.folder, "A copy of a card, or any folder");
    AddHashOption(command, options.hashes);
    command.JsonFlag(options.json);
    command.AddProgressOptions(options.progress);
    command.Example("nqp2 seal /raid/day1/A001");
    command.Statuses({{"0", "the list is written, and all is as an older one recorded it"},
                      {"1", "it is not, or something is not as it was recorded"},
                      {"2", "wrong usage"},
                      {"3", "nqp2-offload cannot be run"}});
}

void AddVerifyCommand(const Command& program) {
    const Command command =
        program.Add("verify", "Check a folder against the list of hashes that it has");
    VerifyOptions& options = command.Runs(RunVerify);
    command.Argument("FOLDER", options.folder, "A copy with its list in the folder ascmhl");
    command.Flag("--append", options.append, "Add what was found to the list");
    command.JsonFlag(options.json);
    command.AddProgressOptions(options.progress);
    command.Example("nqp2 verify /raid/day1/A001");
    command.Statuses({{"0", "all well"},
                      {"1", "something is not as it was recorded"},
                      {"2", "wrong usage"},
                      {"3", "nqp2-offload cannot be run"}});
}

} // namespace nqp2::tool
