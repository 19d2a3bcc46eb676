// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/offload/mhl/sealed_folder.h"
#include "tests/support/faulty_file_system.h"

#include <functional>
#include <gmock/gmock.h>

namespace nqp2::mhl {
namespace {

using nqp2::test::FaultyFileSystem;
using test::HashOf;
using test::ReadFile;
using test::ReplacedIn;
using test::SealedFolder;
using test::SentencesOf;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string kChain = "ascmhl/ascmhl_chain.xml";
const std::string kFirst = "ascmhl/0001_A001_2026-11-21_081010Z.mhl";
const std::string kSecond = "ascmhl/0002_A001_2026-11-21_081110Z.mhl";

/// A history of two generations.
void SealTwice(SealedFolder& folder) {
    folder.Write("A/clip.mxf", "essence");
    folder.Write("text", "abc");
    ASSERT_TRUE(folder.Seal());
    ASSERT_TRUE(folder.Seal());
}

void Edit(const SealedFolder& folder, const std::string& file, std::string_view from,
          std::string_view to) {
    folder.Write(file, ReplacedIn(ReadFile(folder.Path(file)), from, to));
}

/// Changes a manifest and makes the chain fit it again: the fault is what it says.
void EditSealed(const SealedFolder& folder, const std::string& file, std::string_view from,
                std::string_view to) {
    const std::string old =
        HashOf(ReadFile(folder.Path(file)), HashFormat::C4).Text(HashFormat::C4);
    Edit(folder, file, from, to);
    Edit(folder, kChain, old,
         HashOf(ReadFile(folder.Path(file)), HashFormat::C4).Text(HashFormat::C4));
}

struct FaultCase {
    std::function<void(const SealedFolder&)> damage;
    std::vector<std::string> faults; ///< each begins so
};

TEST(HistoryFaults, EachIsToldAndTakesNoGeneration) {
    const std::string c4 = HashOf("", HashFormat::C4).Text(HashFormat::C4);
    const FaultCase kCases[] = {
        {[](auto& it) { Edit(it, kFirst, "set.example", "set.exampl_"); },
         {kFirst + ": this manifest is not the one that was written"}},
        {[](auto& it) { it.Remove(kFirst); },
         {kFirst + ": this manifest, which the chain names, is missing"}},
        {[](auto& it) { it.Remove(kChain); },
         {kChain + ": the history has no chain", kFirst + ": the chain does not name",
          kSecond + ": the chain does not name"}},
        {[](auto& it) { it.Write("ascmhl/0003_x.mhl", "<x/>"); },
         {"ascmhl/0003_x.mhl: the chain does not name this manifest"}},
        {[](auto& it) { Edit(it, kChain, "sequencenr=\"2\"", "sequencenr=\"3\""); },
         {kChain + ":7: number 3 stands where 2 should"}},
        {[](auto& it) { Edit(it, kChain, "sequencenr=\"1\"", "sequencenr=\"one\""); },
         {kChain + ":3: the number \"one\" is none"}},
        {[](auto& it) { Edit(it, kChain, "<path>0001", "<path>../0001"); },
         {kFirst + ": the chain does not name", kChain + ":3: \"../0001"}},
        {[](auto& it) { Edit(it, kChain, "<path>0001", "<path>A/0001"); },
         {kFirst + ": the chain does not name", kChain + ":3: \"A/0001"}},
        {[](auto& it) {
             Edit(it, kChain, "<path>0002_A001_2026-11-21_081110Z",
                  "<path>0001_A001_2026-11-21_081010Z");
         },
         {kChain + ":7: 0001_A001_2026-11-21_081010Z.mhl stands there twice",
          kSecond + ": the chain does not name"}},
        {[&](auto& it) {
             Edit(it, kChain, "<c4>", "<md5>d41d8cd98f00b204e9800998ecf8427e</md5><c4>");
         },
         {kChain + ":5: the md5 of 0001_A001_2026-11-21_081010Z.mhl stands where only a c4 may"}},
        {[](auto& it) { Edit(it, kChain, "</ascmhldirectory>", ""); }, {kChain + ":"}},
        {[](auto& it) { it.Write(kChain, ""); },
         {kChain, kFirst + ": the chain does not name", kSecond + ": the chain does not name"}},
        {[](auto& it) { Edit(it, kChain, "urn:ASC:MHL:DIRECTORY:v2.0", "urn:other"); },
         {kChain + ":2: is another kind of document", kFirst + ": the chain does not name",
          kSecond + ": the chain does not name"}},
        {[](auto& it) { EditSealed(it, kSecond, "</hashlist>", ""); }, {kSecond + ":"}},
        {[](auto& it) { EditSealed(it, kSecond, ">text</path>", ">A/clip.mxf</path>"); },
         {kSecond + ":45: A/clip.mxf is recorded twice"}},
        {[](auto& it) { EditSealed(it, kSecond, ">text</path>", ">A/clip.mxf/x</path>"); },
         {kSecond + ":45: A/clip.mxf/x is recorded as a file and as a folder"}},
        {[](auto& it) { EditSealed(it, kSecond, ">text</path>", ">../text</path>"); },
         {kSecond + ":46: the path \"../text\" leads out of its folder"}},
        {[](auto& it) {
             EditSealed(it, kSecond, "06b05ab6733a618578af5f94892f3950",
                        "06b05ab6733a618578af5f94892f3951");
         },
         {kSecond + ":45: the xxh128 of text is another one than an earlier generation has"}},
        {[](auto& it) { EditSealed(it, kSecond, "size=\"3\"", "size=\"4\""); },
         {kSecond + ":45: the size of text is another one than an earlier generation has"}},
        {[&](auto& it) {
             EditSealed(it, kSecond, "</hashes>",
                        "</hashes><references><hashlistreference><path>A/ascmhl/1.mhl</path><c4>" +
                            c4 + "</c4></hashlistreference></references>");
         },
         {kSecond + ":49: the manifest A/ascmhl/1.mhl is missing, and all of its history"}},
        {[](auto& it) {
             it.Remove("ascmhl");
             it.Write("ascmhl", "");
         },
         {"ascmhl: is no folder, and so no history"}},
        {[](auto& it) {
             it.Remove(kSecond);
             std::filesystem::create_symlink(it.Path(kFirst), it.Path(kSecond));
         },
         {kSecond + ": this manifest, which the chain names, is missing"}},
    };
    for (const FaultCase& each : kCases) {
        SealedFolder folder;
        SealTwice(folder);
        each.damage(folder);
        const std::vector<std::string> faults = SentencesOf(folder.Open());
        ASSERT_EQ(faults.size(), each.faults.size())
            << testing::PrintToString(each.faults) << testing::PrintToString(faults);
        for (const std::string& wanted : each.faults) {
            EXPECT_THAT(faults, testing::Contains(testing::StartsWith(wanted)));
        }
        EXPECT_FALSE(folder.Seal());
        EXPECT_THAT(folder.added, IsEmpty());
    }
}

TEST(HistoryFaults, WhatDoesNotBelongToAHistoryIsARemark) {
    SealedFolder folder;
    SealTwice(folder);
    folder.Write("ascmhl/README.txt", "");
    folder.Write("ascmhl/.hidden", "");
    folder.Write("ascmhl/notes.doc", "");
    EXPECT_THAT(SentencesOf(folder.Open(), false),
                ElementsAre("ascmhl/notes.doc: does not belong to the history"));
    EXPECT_TRUE(folder.Seal());
}

TEST(HistoryFaults, AManifestThatWasEditedStillSaysWhatIsThere) {
    SealedFolder folder;
    folder.Write("text", "abc");
    ASSERT_TRUE(folder.Seal());
    Edit(folder, kFirst, "set.example", "set.exampl_");
    EXPECT_EQ(folder.Verify().verified, 1U);
    folder.Remove(kChain);
    EXPECT_EQ(folder.Verify().verified, 1U);
}

TEST(HistoryFaults, WhicheverCallFailsTheHistoryStaysWhole) {
    for (std::uint64_t skip = 0;; ++skip) {
        SealedFolder folder;
        folder.Write("A/clip.mxf", "essence");
        ASSERT_TRUE(folder.Seal());
        const std::vector<std::string> before = folder.FilesOfHistory();
        FaultyFileSystem faulty;
        const History history = folder.Open();
        Tree tree = folder.Present(history, {});
        Compare(history, tree);
        faulty.Fail({.error = platform::IoError::NoSpace, .skip = skip, .times = 1});
        std::vector<AddedGeneration> added;
        ManifestHead head = folder.Head();
        head.created += 60;
        const History again = History::Open(faulty, folder.Scope());
        const bool isAdded = static_cast<bool>(again.AddGeneration(head, tree, added));
        const History after = folder.Open();
        EXPECT_EQ(after.Generations().size(), isAdded ? 2U : 1U) << skip;
        if (!isAdded) {
            // At the worst there is a whole manifest that the chain does not name yet.
            EXPECT_EQ(folder.FilesOfHistory().size(), before.size() + after.Unlisted().size());
            EXPECT_EQ(after.Found().Faults(), after.Unlisted().size());
        }
        if (isAdded && faulty.Calls() <= skip) {
            EXPECT_GT(skip, 10U);
            return;
        }
    }
}

TEST(HistoryFaults, AHistoryThatAnotherHasContinuedIsNotOverwritten) {
    SealedFolder folder;
    SealTwice(folder);
    const History history = folder.Open();
    Tree tree = folder.Present(history, {});
    Compare(history, tree);
    ASSERT_TRUE(folder.Seal());
    std::vector<AddedGeneration> added;
    EXPECT_EQ(history.AddGeneration(folder.Head(), tree, added).error, platform::IoError::Busy);
    EXPECT_THAT(SentencesOf(folder.Open()), IsEmpty());
}

TEST(HistoryFaults, FindingsAreCountedBeyondThoseThatAreKept) {
    Findings findings;
    for (std::size_t i = 0; i < Findings::kMostKept + 5; ++i) {
        findings.Add({i % 2 == 0, "f", 0, "s"});
    }
    Findings sum;
    sum.Add(findings);
    sum.Add(findings);
    EXPECT_EQ(sum.Kept().size(), Findings::kMostKept);
    EXPECT_EQ(sum.Count(), 2 * findings.Count());
    EXPECT_EQ(sum.Faults(), 2 * findings.Faults());
}

} // namespace
} // namespace nqp2::mhl
