// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/hash_format.h"
#include "offload/mhl/tree.h"
#include "tests/offload/mhl/sealed_folder.h"

#include <array>
#include <gmock/gmock.h>

namespace nqp2::mhl {
namespace {

using test::HashOf;

/// By format.
using Texts = std::array<std::string, kHashFormats.size()>;

Texts TextsOf(const Hashes& hashes) {
    Texts texts;
    for (const HashFormatFacts& each : kHashFormats) {
        texts[static_cast<std::size_t>(each.format)] = hashes.Text(each.format);
    }
    return texts;
}

struct ContentCase {
    std::string bytes;
    Texts texts;
};

// clang-format off
const ContentCase kContents[] = {
    {"", {"c459dsjfscH38cYeXXYogktxf4Cd9ibshE3BHUo6a58hBXmRQdZrAkZzsWcbWtDg5oQstpDuni4Hirj75GEmTc1sFT",
          "d41d8cd98f00b204e9800998ecf8427e", "da39a3ee5e6b4b0d3255bfef95601890afd80709",
          "99aa06d3014798d86001c324468d497f", "2d06800538d394c2", "ef46db3751d8e999"}},
    {"abc", {"c45S4rnaTNWonxss1u8LzsaJdEph1AJhWUF4sh2waXKMsutyfAxg4ybUeuXVWS9HdNcEypmeXn8FZGonD4w1rj9DZp",
             "900150983cd24fb0d6963f7d28e17f72", "a9993e364706816aba3e25717850c26c9cd0d89d",
             "06b05ab6733a618578af5f94892f3950", "78af5f94892f3950", "44bc2cf5ad770999"}},
    {"hello\n", {"c45dkQrAqUiR8WzPGgn6fAGji3VAVeAE7cKVG4G53ou9dTk4Nzb9vFYEwzy9jq5ZKQKM64DMpPpVbYe2bMsZP2yYKi",
                 "b1946ac92492d2347c6235b4d2611184", "f572d396fae9206628714fb2ce00f72e94f2258f",
                 "6bba86c7e069f56d5a10b435f1c8e49c", "99fc819aaba2462a", "e4c191d091bd8853"}},
};
const std::string kPaddedC4 =
    "c4111U2BfBULAzy6z3ef85YNPEnkBtPj35DpefGRnLKS2iKve5MEXUpbkhRxzkP6jFiAS9JxHrNt2Ch9CeW16GZ3zA";
const Texts kFolderContent = {
    "c42iQ5TanjC2EmLfha4T3wZcZszDqbsiF3VTEfeYq5zx9Xrr2PJnx3RYTa4MeCuiMaHGQPcj6iLcHJtCmjR8euqUHi",
    "920b577d7bdc7b9e4dd6078f5d2353a1", "7873e56e8e8f3d78e44457b02f357a0cce293e0e",
    "eeba7f2d90b6e8dddd3694156e134655", "864d5ee9f55cea39", "cf93645bf582a9a4"};
const Texts kFolderStructure = {
    "c41C4wj8sgWRMJjukvAP9mNQhafzjC4Uwanps4gqeVZPcFUaGpzeBBwgjZBm2YqUSH645zjW7mhUb5rwis6KpBwPJb",
    "4b67f4b3caafb927ef1e4880ab0f8e17", "eeec59a18ee79ddba4cbf4756a43b75aaa57b47b",
    "283359c7bdd1be5bdf129e0fc9a2a8f8", "fa5943e97d306af6", "67a79503b405e4b5"};
const Texts kRootContent = {
    "c42BEc1Yz3xEvxbp1HnmegR9JziinCc2HYNuPwVg4evVRaXni8DfYqEkVpCnCHBx8xqxfP21Kts4rJnpGDaUCoTXPN",
    "0a4ae99848eae9841de1e3d86b214cb4", "1513ee01835f10d73ead49672ea9f6bb0dc5f02d",
    "52837a1b6699e1a1fda5aeb91638c63c", "01d2e82c098da66d", "0def3e499d754fc1"};
const Texts kRootStructure = {
    "c42bvkNWmqUMXxBUpucj4SV2VXFETQhVkoVRSu95Gix2MQ4jSbPhDmkwEcaGPtBPdbDfP9Ku7ixP1MiVa1WSwxRFGP",
    "91ccd6cd4612c34223b2c8fb32edc79e", "9386752c431624df6cfac2629d44736e4fb899aa",
    "f4b6a1b21b70b1321ba6494c05b90298", "87da879ffd7a0ba4", "11aae5f4deb37146"};
// clang-format on

TEST(Hash, EveryFormatsTextsArePublishedOnesAndAreReadBack) {
    Hasher hasher(FormatSet::All());
    for (const ContentCase& each : kContents) {
        // In pieces, with a hasher that is used again.
        for (const char ch : each.bytes) {
            hasher.Add({&ch, 1});
        }
        const Hashes hashes = hasher.Value();
        EXPECT_EQ(TextsOf(hashes), each.texts);
        Hashes read;
        for (const HashFormatFacts& facts : kHashFormats) {
            EXPECT_EQ(ParseHashText(facts.format, hashes.Text(facts.format), read), "");
            EXPECT_EQ(hashes.Text(facts.format).size(), facts.characters);
        }
        EXPECT_TRUE(read == hashes);
    }
    EXPECT_EQ(HashOf("12372", HashFormat::C4).Text(HashFormat::C4), kPaddedC4);
}

struct TextFault {
    HashFormat format;
    std::string text;
    std::string fault;
};

TEST(Hash, TextsOfOtherWritersAreRefusedWithTheReason) {
    const TextFault kFaults[] = {
        {HashFormat::Md5, "", "is empty"},
        {HashFormat::Md5, "d41d", "has 4 characters instead of 32"},
        {HashFormat::Xxh64, "EF46DB3751D8E999", "is written in capital letters"},
        {HashFormat::Xxh64, "ef46db3751d8e99g", "has a character that is no digit of it"},
        {HashFormat::C4, "x4" + kPaddedC4.substr(2), "does not begin with \"c4\""},
        {HashFormat::C4, kPaddedC4.substr(0, 89) + "0", "has a character that is no digit of it"},
        {HashFormat::C4, "c4" + std::string(88, 'z'), "is larger than any"},
    };
    for (const TextFault& each : kFaults) {
        Hashes hashes;
        EXPECT_EQ(ParseHashText(each.format, each.text, hashes), each.fault) << each.text;
        EXPECT_TRUE(hashes.Formats().IsEmpty()) << each.text;
    }
}

void AddFile(Tree& tree, NodeId parent, std::string_view name, std::string_view bytes,
             FormatSet formats) {
    tree.SetHashes(*tree.AddFile(parent, name, bytes.size(), 0), HashOf(bytes, formats));
}

TEST(Tree, FoldersHaveThePublishedHashes) {
    Tree tree;
    const NodeId clips = *tree.AddFolder(kScope, "Clips");
    AddFile(tree, clips, "b.mxf", "abc", FormatSet::All());
    AddFile(tree, clips, "a.mxf", "hello\n", FormatSet::All());
    AddFile(tree, kScope, "\xC3\xA9.txt", "x", FormatSet::All());
    const NodeId empty = *tree.AddFolder(kScope, "Void");
    tree.HashFolders(FormatSet::All());
    EXPECT_EQ(TextsOf(tree.FolderHashesOf(clips).content), kFolderContent);
    EXPECT_EQ(TextsOf(tree.FolderHashesOf(clips).structure), kFolderStructure);
    EXPECT_EQ(TextsOf(tree.FolderHashesOf(kScope).content), kRootContent);
    EXPECT_EQ(TextsOf(tree.FolderHashesOf(kScope).structure), kRootStructure);
    EXPECT_EQ(TextsOf(tree.FolderHashesOf(empty).content), kContents[0].texts);
}

TEST(Tree, AFolderIsHashedInTheFormatsThatAllItsFilesHave) {
    Tree tree;
    const NodeId folder = *tree.AddFolder(kScope, "A");
    AddFile(tree, folder, "1", "1", FormatSet(HashFormat::Md5) | HashFormat::Xxh64);
    AddFile(tree, folder, "2", "2", HashFormat::Md5);
    AddFile(tree, kScope, "3", "3", HashFormat::Xxh64);
    tree.HashFolders(FormatSet::All());
    EXPECT_EQ(tree.FormatsOf(folder).Bits(), FormatSet(HashFormat::Md5).Bits());
    EXPECT_TRUE(tree.FormatsOf(kScope).IsEmpty());
}

TEST(Tree, FindsOrdersAndNamesWhatWasAdded) {
    Tree tree;
    constexpr int kFolders = 60;
    constexpr int kFiles = 50;
    for (int i = 0; i < kFolders; ++i) {
        const NodeId folder = *tree.AddFolder(kScope, "f" + std::to_string(i));
        for (int k = 0; k < kFiles; ++k) {
            ASSERT_TRUE(tree.AddFile(folder, std::to_string(k), k, k));
        }
        EXPECT_FALSE(tree.AddFile(folder, "7", 0, 0));
    }
    tree.Sort();
    std::vector<std::string> paths;
    for (NodeId node = tree.FirstInPostOrder(kScope); node != kNoNode;
         node = tree.NextInPostOrder(node, kScope)) {
        paths.push_back(tree.PathOf(node));
        EXPECT_EQ(tree.Find(paths.back()), node);
    }
    ASSERT_EQ(paths.size(), tree.Size());
    EXPECT_THAT(std::vector(paths.begin(), paths.begin() + 3),
                testing::ElementsAre("f0/0", "f0/1", "f0/10"));
    EXPECT_EQ(paths[kFiles], "f0");
    EXPECT_EQ(paths[kFiles + 1], "f1/0");
    EXPECT_EQ(paths.back(), "");
    EXPECT_EQ(tree.Find("f1/0/x"), kNoNode);
    EXPECT_EQ(tree.Find("f1/99"), kNoNode);
}

TEST(Tree, TakesFewBytesAFile) {
    Tree tree;
    constexpr std::size_t kFiles = 100'000;
    constexpr std::size_t kNameBytes = 12;
    const Hashes hashes = HashOf("x", HashFormat::Xxh128);
    NodeId folder = kScope;
    for (std::size_t i = 0; i < kFiles; ++i) {
        if (i % 1000 == 0) {
            folder = *tree.AddFolder(kScope, "folder" + std::to_string(i));
        }
        std::string name = std::to_string(i);
        name.resize(kNameBytes, '_');
        tree.SetHashes(*tree.AddFile(folder, name, i, 0), hashes);
    }
    EXPECT_LT(tree.BytesUsed(), kFiles * (100 + kNameBytes));
}

} // namespace
} // namespace nqp2::mhl
