// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/console.h"
#include "nqp2/command.h"
#include "nqp2/program_words.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace nqp2::tool {
namespace {

constexpr const char* kCatalogueProgram = "nqp2-catalogue";
constexpr const char* kPackage = "; it comes with the package nqp2-catalogue";

struct CatalogOptions {
    const char* command = "";
    bool takesPaths = false; ///< and no labels or numbers
    std::string database;
    std::vector<std::string> cards;
    std::string label;
    std::string name;
    bool recursive = false;
    bool json = false;
};

struct CatalogSearchOptions {
    std::string database;
    std::vector<std::string> words;
    std::string from;
    std::string to;
    std::string camera;
    std::string codec;
    std::string rate;
    std::string state;
    std::string sort;
    std::string page;
    std::uint32_t limit = 100;
    bool json = false;
};

struct CatalogExportOptions {
    std::string database;
    bool lines = false;
    bool csv = false;
};

/// A card that may be named by its label or number, or by a path.
std::string NameOrPath(const std::string& argument) {
    if (argument.empty()) {
        throw Failure("", "is no name", "it is empty", kUsage);
    }
    std::error_code error;
    return std::filesystem::exists(argument, error) ? PathForProgram(argument) : argument;
}

Status RunCatalog(Console& /*console*/, const CatalogOptions& options) {
    ProgramWords words(options.command);
    words.PutGiven("db", options.database);
    for (const std::string& card : options.cards) {
        words.Put("card", options.takesPaths ? PathForProgram(card) : NameOrPath(card));
    }
    words.PutGiven("label", options.label);
    words.PutFlag("recursive", options.recursive);
    words.PutFlag("json", options.json);
    return words.Become(kCatalogueProgram, kPackage);
}

Status RunCatalogShow(Console& /*console*/, const CatalogOptions& options) {
    // A clip may be called as a file that happens to be here.
    const bool isPath = options.name.find('/') != std::string::npos;
    ProgramWords words("show");
    words.PutGiven("db", options.database);
    words.Put("words", isPath || options.name.empty() ? NameOrPath(options.name) : options.name);
    words.PutFlag("json", options.json);
    return words.Become(kCatalogueProgram);
}

/// Words that the user's shell has parted stay together.
std::string JoinedWords(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        const bool isPhrase =
            word.find(' ') != std::string::npos && word.find('"') == std::string::npos;
        text += text.empty() ? "" : " ";
        text += isPhrase ? '"' + word + '"' : word;
    }
    return text;
}

Status RunCatalogSearch(Console& /*console*/, const CatalogSearchOptions& options) {
    ProgramWords words("search");
    words.PutGiven("db", options.database);
    words.PutGiven("words", JoinedWords(options.words));
    words.PutGiven("from", options.from);
    words.PutGiven("to", options.to);
    words.PutGiven("camera", options.camera);
    words.PutGiven("codec", options.codec);
    words.PutGiven("rate", options.rate);
    words.PutGiven("state", options.state);
    words.PutGiven("sort", options.sort);
    words.Put("limit", std::to_string(options.limit));
    words.PutGiven("page", options.page.empty() || options.page == kStandardOutput
                               ? options.page
                               : PathForProgram(options.page));
    words.PutFlag("json", options.json);
    return words.Become(kCatalogueProgram, kPackage);
}

Status RunCatalogExport(Console& /*console*/, const CatalogExportOptions& options) {
    if (options.lines == options.csv) {
        throw Failure("catalog export", "needs a form", "--jsonl or --csv", kUsage);
    }
    ProgramWords words("export");
    words.PutGiven("db", options.database);
    words.PutFlag("jsonl", options.lines);
    words.PutFlag("csv", options.csv);
    return words.Become(kCatalogueProgram, kPackage);
}

void DatabaseOption(const Command& command, std::string& database) {
    command.ValueOption("--db", database, "WHERE",
                        "A file, or postgresql://[USER@]HOST/NAME; if left out\n"
                        "~/.local/share/nqp2/catalogue.sqlite");
    command.File("~/.local/share/nqp2/catalogue.sqlite",
                 "the catalogue; where XDG_DATA_HOME is set, nqp2/catalogue.sqlite in there");
    command.Statuses({{"0", "done"},
                      {"1", "the catalogue or a card cannot be read or written"},
                      {"2", "wrong usage"},
                      {"3", "nqp2-catalogue cannot be run"}});
}

/// A command that the catalogue's program has under the same name.
CatalogOptions& OptionsOf(const Command& command, const char* name) {
    CatalogOptions& options = command.Runs(RunCatalog);
    options.command = name;
    return options;
}

template <class Options>
Option AddCommonOptions(const Command& command, Options& options) {
    DatabaseOption(command, options.database);
    return command.JsonFlag(options.json);
}

void AddStoring(const Command& group) {
    const Command add = group.Add("add", "Take cards into the catalogue, or bring them up to date");
    CatalogOptions& adding = OptionsOf(add, "add");
    adding.takesPaths = true;
    add.CardArguments(adding.cards);
    add.Flag("--recursive", adding.recursive, "Take every card in these folders and below");
    add.ValueOption("--label", adding.label, "TEXT", "What stands on the card or shelf");
    AddCommonOptions(add, adding);
    add.Example("nqp2 catalog add /media/card --label \"Shelf 4, A012\"");
    const Command update = group.Add("update", "Read again what has changed on cards");
    CatalogOptions& updating = OptionsOf(update, "update");
    update
        .Argument("CARD", updating.cards,
                  "Numbers, labels, serial numbers or paths; all that\n"
                  "can be reached if left out")
        .Required(false);
    AddCommonOptions(update, updating);
    update.Example("nqp2 catalog update");
    update.Note("What is not there now stays as it was: nothing is removed for that.");
}

void AddReading(const Command& group) {
    const Command cards = group.Add("cards", "List all cards that were ever seen");
    CatalogOptions& listing = OptionsOf(cards, "cards");
    AddCommonOptions(cards, listing);
    cards.Example("nqp2 catalog cards");
    const Command show = group.Add("show", "Tell all that is known of a card or clip");
    CatalogOptions& showing = show.Runs(RunCatalogShow);
    show.Argument("NAME", showing.name,
                  "Of a card its number, label, serial number, or a path with a /;\n"
                  "of a clip its name or global identifier");
    AddCommonOptions(show, showing);
    show.Example("nqp2 catalog show A012");
}

void AddSearching(const Command& group) {
    const Command command = group.Add("search", "Find clips on all cards that were ever seen");
    CatalogSearchOptions& options = command.Runs(RunCatalogSearch);
    command
        .Argument("WORDS", options.words,
                  "In titles, names, places, people, memos, programme and scene, all of\n"
                  "them; \"several together\", begin*, and behind -- also -not")
        .Required(false);
    command.ValueOption("--from", options.from, "DATE", "Shot then or later: 2009, 2009-05-03");
    command.ValueOption("--to", options.to, "DATE", "Shot then or before, that day included");
    command.ValueOption("--camera", options.camera, "MODEL", "Its model begins so");
    command.ValueOption("--codec", options.codec, "CODEC", "Its codec begins so");
    command.ValueOption("--rate", options.rate, "RATE", "Its rate begins so: 50i, 59.94p");
    command
        .ValueOption("--state", options.state, "STATE",
                     "incomplete, missing-segment, not-ingested or one-copy")
        .OneOf(
            std::vector<std::string>{"incomplete", "missing-segment", "not-ingested", "one-copy"});
    command.ValueOption("--sort", options.sort, "ORDER", "newest (if left out), oldest or name")
        .OneOf(std::vector<std::string>{"newest", "oldest", "name"});
    command.ValueOption("--limit", options.limit, "N", "Tell at most so many (100 if left out)")
        .Between(1, 100'000);
    const Option page = command.ValueOption("-o,--output", options.page, "PAGE",
                                            "Write a page that shows them, .html; - for standard\n"
                                            "output");
    AddCommonOptions(command, options).Excludes(page);
    command.Example("nqp2 catalog search interview --from 2009-05-03 --to 2009-05-03");
}

void AddRemovingAndExporting(const Command& group) {
    const Command remove = group.Add("remove", "Forget cards and the clips that no other has");
    CatalogOptions& removing = OptionsOf(remove, "remove");
    remove.Argument("CARD", removing.cards, "Numbers, labels, serial numbers or paths");
    AddCommonOptions(remove, removing);
    remove.Example("nqp2 catalog remove 3");
    const Command exporting = group.Add("export", "Write all clips of the catalogue");
    CatalogExportOptions& options = exporting.Runs(RunCatalogExport);
    exporting.Flag("--jsonl", options.lines,
                   "As JSON, each clip on a line of its own; this or --csv");
    exporting.Flag("--csv", options.csv, "As a table, each clip of each card in a row");
    DatabaseOption(exporting, options.database);
    exporting.Example("nqp2 catalog export --csv");
}

} // namespace

void AddCatalogCommand(const Command& program) {
    const Command group =
        program.AddGroup("catalog", "Remember cards, and find their clips without them");
    group.Example("nqp2 catalog search interview --from 2009-05-03 --to 2009-05-03");
    AddStoring(group);
    AddSearching(group);
    AddReading(group);
    AddRemovingAndExporting(group);
}

} // namespace nqp2::tool
