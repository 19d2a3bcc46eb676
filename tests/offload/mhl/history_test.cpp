// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/offload/mhl/sealed_folder.h"

#include <gmock/gmock.h>

namespace nqp2::mhl {
namespace {

using test::HashOf;
using test::ReadFile;
using test::ReplacedIn;
using test::SealedFolder;
using test::SentencesOf;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr FormatSet kXxh64 = HashFormat::Xxh64;
constexpr FormatSet kMd5 = HashFormat::Md5;

/// What a comparison says, as lines: "changed A/b".
std::vector<std::string> Verdict(const SealedFolder& folder, FormatSet formats) {
    const History history = folder.Open();
    Tree present = folder.Present(history, formats);
    const Comparison found = Compare(history, present);
    std::vector<std::string> lines;
    const auto tell = [&](const std::string& what, const Tree& tree, auto& nodes) {
        for (const NodeId each : nodes) {
            lines.push_back(what + " " + tree.PathOf(each));
        }
    };
    tell("changed", present, found.changed);
    tell("unproven", present, found.unproven);
    tell("new", present, found.added);
    for (const Renamed& each : found.renamed) {
        lines.push_back("renamed " + history.Expected().PathOf(each.before) + " -> " +
                        present.PathOf(each.now));
    }
    tell("missing", history.Expected(), found.missing);
    tell("missing folder", history.Expected(), found.missingFolders);
    tell("folder", present, found.changedFolders);
    EXPECT_EQ(found.IsClean(), lines.empty());
    lines.push_back("verified " + std::to_string(found.verified));
    return lines;
}

void WriteCard(const SealedFolder& folder) {
    folder.Write("CLIP/a.xml", "metadata");
    folder.Write("VIDEO/a.mxf", "essence");
    folder.Write("VIDEO/b.mxf", "other essence");
    folder.Write("empty", "");
    std::filesystem::create_directory(folder.Path("VOICE"));
}

std::string ManifestOf(const SealedFolder& folder, std::size_t index = 0) {
    return ReadFile(folder.Path(folder.added.at(index).path));
}

TEST(History, AFirstGenerationIsProvenByAllItWrote) {
    SealedFolder folder;
    WriteCard(folder);
    EXPECT_FALSE(folder.Open().Exists());
    ASSERT_TRUE(folder.Seal(kXxh64 | HashFormat::C4));
    EXPECT_THAT(folder.FilesOfHistory(),
                ElementsAre("0001_A001_2026-11-21_081010Z.mhl", "ascmhl_chain.xml"));
    const std::string manifest = ManifestOf(folder);
    const std::string chain = ReadFile(folder.Path("ascmhl/ascmhl_chain.xml"));
    EXPECT_THAT(chain, HasSubstr(HashOf(manifest, HashFormat::C4).Text(HashFormat::C4)));
    EXPECT_THAT(chain, HasSubstr("<hashlist sequencenr=\"1\">"));
    EXPECT_THAT(manifest,
                AllOf(HasSubstr("<path size=\"0\" lastmodificationdate=\"2026-11-21T08:09:10Z\">"
                                "empty</path>"),
                      HasSubstr("<xxh64 action=\"original\">ef46db3751d8e999</xxh64>"),
                      HasSubstr("<pattern>ascmhl/</pattern>"), HasSubstr("<roothash>"),
                      Not(HasSubstr("verified"))));
    const History history = folder.Open();
    EXPECT_TRUE(history.Exists());
    EXPECT_THAT(SentencesOf(history, false), IsEmpty());
    ASSERT_EQ(history.Generations().size(), 1U);
    EXPECT_TRUE(history.Generations()[0].isWhole);
    EXPECT_EQ(history.Generations()[0].head.ignored, IgnoreList::Default().Patterns());
    EXPECT_TRUE(history.Generations()[0].c4 == folder.added[0].c4);
    EXPECT_TRUE(history.Generations()[0].head.root->structure == folder.added[0].root.structure);
    EXPECT_EQ(history.Formats().Bits(), (kXxh64 | HashFormat::C4).Bits());
    EXPECT_THAT(Verdict(folder, {}), ElementsAre("verified 4"));
}

TEST(History, EachKindOfChangeIsToldApart) {
    SealedFolder folder;
    WriteCard(folder);
    ASSERT_TRUE(folder.Seal());
    folder.Write("VIDEO/a.mxf", "essencf"); // one byte, the same size
    folder.Write("CLIP/._a.xml", "new");
    folder.Write("CLIP/.DS_Store", "ignored");
    folder.Rename("VIDEO/b.mxf", "VIDEO/c.mxf");
    folder.Remove("empty");
    folder.Remove("VOICE");
    folder.Write("other", ""); // no former "empty": empty files are all alike
    const FormatSet formats = HashFormat::Xxh128;
    EXPECT_THAT(Verdict(folder, formats),
                testing::UnorderedElementsAre("changed VIDEO/a.mxf", "new CLIP/._a.xml",
                                              "new other", "renamed VIDEO/b.mxf -> VIDEO/c.mxf",
                                              "missing empty", "missing folder VOICE", "folder ",
                                              "folder CLIP", "folder VIDEO", "verified 1"));
}

TEST(History, LaterGenerationsNeverHideWhatTheFirstOneSaid) {
    SealedFolder folder;
    WriteCard(folder);
    ASSERT_TRUE(folder.Seal(kXxh64));
    folder.Write("VIDEO/a.mxf", "broken!");
    folder.Write("new", "new");
    folder.Remove("empty");
    ASSERT_TRUE(folder.Seal(kMd5));
    const std::string manifest = ManifestOf(folder);
    EXPECT_THAT(manifest, HasSubstr(HashOf("metadata", kMd5).Text(HashFormat::Md5)));
    const auto line = [](FormatSet format, std::string_view action, std::string_view bytes) {
        const HashFormat only = format == kMd5 ? HashFormat::Md5 : HashFormat::Xxh64;
        const std::string name(FactsOf(only).name);
        return "<" + name + " action=\"" + std::string(action) + "\">" +
               HashOf(bytes, format).Text(only) + "</" + name + ">";
    };
    EXPECT_THAT(manifest, AllOf(HasSubstr(line(kMd5, "verified", "metadata")),
                                HasSubstr(line(kXxh64, "verified", "metadata")),
                                HasSubstr(line(kMd5, "failed", "broken!")),
                                HasSubstr(line(kXxh64, "failed", "broken!")),
                                HasSubstr(line(kMd5, "original", "new"))));
    EXPECT_THAT(manifest, Not(HasSubstr(line(kXxh64, "original", "new"))));
    EXPECT_THAT(SentencesOf(folder.Open(), false), IsEmpty());
    // The changed file is so for ever, the missing one missing; the folders are as they were.
    EXPECT_THAT(Verdict(folder, {}),
                ElementsAre("changed VIDEO/a.mxf", "missing empty", "verified 3"));
    // What is new in the second generation is expected in its format.
    folder.Write("new", "wen");
    EXPECT_THAT(Verdict(folder, {}), testing::Contains("changed new"));
    // And the good file heals it.
    folder.Write("new", "new");
    folder.Write("VIDEO/a.mxf", "essence");
    folder.Write("empty", "");
    ASSERT_TRUE(folder.Seal({}));
    EXPECT_THAT(Verdict(folder, {}), ElementsAre("verified 5"));
}

TEST(History, RenamedFilesAndFoldersAreRecordedOnceAndExpectedThere) {
    SealedFolder folder;
    WriteCard(folder);
    ASSERT_TRUE(folder.Seal(kXxh64));
    folder.Rename("VIDEO", "PICTURES/MOVIES");
    folder.Rename("CLIP/a.xml", "CLIP/z.xml");
    ASSERT_TRUE(folder.Seal(kXxh64));
    EXPECT_THAT(ManifestOf(folder), AllOf(HasSubstr("<previousPath>VIDEO/a.mxf</previousPath>"),
                                          HasSubstr("<previousPath>VIDEO</previousPath>"),
                                          HasSubstr("<previousPath>CLIP/a.xml</previousPath>")));
    EXPECT_THAT(Verdict(folder, {}), ElementsAre("verified 4"));
    ASSERT_TRUE(folder.Seal(kXxh64));
    EXPECT_THAT(ManifestOf(folder), Not(HasSubstr("previousPath")));
    // A file at the old place is a new one again.
    folder.Write("CLIP/a.xml", "another");
    EXPECT_THAT(Verdict(folder, kXxh64), testing::Contains("new CLIP/a.xml"));
}

TEST(History, PatternsOfAllGenerationsAndOfTheCallerHold) {
    SealedFolder folder;
    WriteCard(folder);
    folder.Write("CLIP/x.tmp", "1");
    ASSERT_TRUE(folder.Seal());
    History history = folder.Open();
    ASSERT_TRUE(history.Ignore("*.tmp"));
    Tree present = folder.Present(history, HashFormat::Xxh128);
    const Comparison found = Compare(history, present);
    EXPECT_THAT(found.missing, IsEmpty());
    std::vector<AddedGeneration> added;
    ManifestHead head = folder.Head();
    head.created += 60;
    ASSERT_TRUE(history.AddGeneration(head, present, added));
    EXPECT_TRUE(folder.Open().Ignored().IsIgnored("CLIP/x.tmp", false));
    EXPECT_THAT(Verdict(folder, {}), ElementsAre("verified 4"));
}

TEST(History, TheNearestHistoryAnswersForAFile) {
    SealedFolder folder("Reel");
    folder.Write("A001/clip.mxf", "one");
    folder.Write("A002/day/clip.mxf", "two");
    folder.Write("top", "three");
    // A history of its own for one folder, made when that was a scope.
    std::vector<AddedGeneration> added;
    {
        const History inner = History::Open(platform::Files(), folder.Path("A002/day"));
        Tree tree;
        tree.SetHashes(*tree.AddFile(kScope, "clip.mxf", 3, 0), HashOf("two", kMd5));
        tree.HashFolders(FormatSet::All());
        Compare(inner, tree);
        ASSERT_TRUE(inner.AddGeneration(folder.Head(), tree, added));
    }
    ASSERT_TRUE(folder.Seal(kXxh64));
    ASSERT_EQ(folder.added.size(), 2U);
    EXPECT_THAT(folder.added[0].path, HasSubstr("A002/day/ascmhl/0002_day_"));
    EXPECT_EQ(folder.added[0].number, 2U);
    EXPECT_THAT(folder.added[1].path, HasSubstr("ascmhl/0001_Reel_"));
    EXPECT_THAT(ManifestOf(folder, 0), HasSubstr(">clip.mxf<"));
    EXPECT_THAT(ManifestOf(folder, 1),
                AllOf(HasSubstr(">A002/day<"), Not(HasSubstr("day/clip.mxf")),
                      HasSubstr("<path>" + folder.added[0].path + "</path>"),
                      HasSubstr(folder.added[0].c4.Text(HashFormat::C4))));
    const History history = folder.Open();
    EXPECT_THAT(SentencesOf(history, false), IsEmpty());
    EXPECT_THAT(history.NestedFolders(), ElementsAre("A002/day"));
    EXPECT_EQ(FormatsToCheck(history, "A002/day/clip.mxf").Bits(), (kMd5 | kXxh64).Bits());
    EXPECT_THAT(Verdict(folder, {}), ElementsAre("verified 3"));
    folder.Write("A002/day/clip.mxf", "twu");
    EXPECT_THAT(Verdict(folder, {}), testing::Contains("changed A002/day/clip.mxf"));
}

TEST(History, AGenerationBelowDoesNotMakeTheOuterFoldersWrong) {
    SealedFolder folder("Reel");
    folder.Write("A/clip", "one");
    ASSERT_TRUE(History::Open(platform::Files(), folder.Path("A"))
                    .AddGeneration(folder.Head(), Tree(), folder.added));
    ASSERT_TRUE(folder.Seal());
    folder.Write("A/more", "two");
    const History inner = History::Open(platform::Files(), folder.Path("A"));
    Tree tree;
    for (const auto& [name, bytes] : {std::pair("clip", "one"), std::pair("more", "two")}) {
        tree.SetHashes(*tree.AddFile(kScope, name, 3, 0), HashOf(bytes, HashFormat::Xxh128));
    }
    tree.HashFolders(FormatSet::All());
    Compare(inner, tree);
    ManifestHead head = folder.Head();
    head.created += 60;
    ASSERT_TRUE(inner.AddGeneration(head, tree, folder.added));
    EXPECT_THAT(SentencesOf(folder.Open(), false), IsEmpty());
    EXPECT_THAT(Verdict(folder, {}), ElementsAre("verified 2"));
}

TEST(History, NamesOfManifestsAreSoundNamesOfFiles) {
    const std::int64_t time = SealedFolder::kFirstTime;
    const std::string ending = "_2026-11-21_080910Z.mhl";
    EXPECT_EQ(ManifestName(1, "A001", time), "0001_A001" + ending);
    EXPECT_EQ(ManifestName(10000, "a/b\n\xFF", time), "10000_a_b__" + ending);
    const std::string longest = ManifestName(1, std::string(199, 'x') + "\xC3\xA9", time);
    EXPECT_EQ(longest, "0001_" + std::string(199, 'x') + ending);
}

} // namespace
} // namespace nqp2::mhl
