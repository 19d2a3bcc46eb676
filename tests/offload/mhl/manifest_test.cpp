// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/manifest.h"
#include "offload/mhl/name_rules.h"
#include "tests/offload/mhl/sealed_folder.h"

#include <gmock/gmock.h>

namespace nqp2::mhl {
namespace {

using test::HashOf;
using test::ReplacedIn;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Writes down all that is read.
class Notes final : public ManifestHandler {
public:
    void OnFile(const FileRecord& record) override {
        std::string line = record.path;
        line += record.size ? " " + std::to_string(*record.size) : " -";
        line += record.modified ? " " + std::to_string(*record.modified) : " -";
        for (const HashFormatFacts& each : kHashFormats) {
            if (record.hashes.Has(each.format)) {
                const auto action = record.actions[static_cast<std::size_t>(each.format)];
                line += " " + record.hashes.Text(each.format) + ":" +
                        std::to_string(static_cast<int>(action));
            }
        }
        records.push_back(line + (record.previousPath.empty() ? "" : " < " + record.previousPath));
    }
    void OnFolder(const FolderRecord& record) override {
        records.push_back(record.path + "/ " + record.hashes.content.Text(HashFormat::Xxh64) + " " +
                          record.hashes.structure.Text(HashFormat::Xxh64) +
                          (record.previousPath.empty() ? "" : " < " + record.previousPath));
    }
    void OnReference(const Reference& reference) override {
        records.push_back("ref " + reference.path + " " + reference.c4.Text(HashFormat::C4));
    }
    void OnFinding(bool isFault, int line, std::string sentence) override {
        (isFault ? faults : remarks).push_back(std::to_string(line) + ": " + sentence);
    }

    /// In pieces of that size.
    bool Read(std::string_view bytes, std::size_t piece) {
        ManifestReader reader(*this);
        bool isSound = true;
        for (; !bytes.empty() && isSound; bytes.remove_prefix(std::min(piece, bytes.size()))) {
            isSound = reader.Add(bytes.substr(0, piece));
        }
        isSound = reader.Finish() && isSound;
        head = reader.Head();
        return isSound;
    }

    std::vector<std::string> records;
    std::vector<std::string> faults;
    std::vector<std::string> remarks;
    ManifestHead head;
};

constexpr std::size_t kWhole = std::size_t{1} << 30;

/// A folder with the names that are hardest to write.
Tree OddTree() {
    Tree tree;
    const NodeId folder = *tree.AddFolder(kScope, " A & <B> ");
    const NodeId file = *tree.AddFile(folder, "line\nbreak\rtab\t\"'", 3, 0);
    tree.SetHashes(file, HashOf("abc", FormatSet(HashFormat::Xxh64) | HashFormat::Md5));
    tree.SetAction(file, HashFormat::Md5, Action::Original);
    tree.SetAction(file, HashFormat::Xxh64, Action::Failed);
    tree.SetPreviousPath(file, "was & is");
    const NodeId other =
        *tree.AddFile(kScope, "\xC3\xA9\xF0\x9F\x8E\xAC", std::nullopt, std::nullopt);
    tree.SetHashes(other, HashOf("x", HashFormat::Xxh64));
    tree.SetActions(other, Action::Verified);
    static_cast<void>(tree.AddFile(kScope, "unread", 1, 1));
    tree.Sort();
    tree.HashFolders(HashFormat::Xxh64);
    return tree;
}

ManifestHead OddHead() {
    ManifestHead head;
    head.created = test::SealedFolder::kFirstTime;
    head.hostName = "a & b";
    head.tool = "nqp2";
    head.toolVersion = "1 <2>";
    head.authors = {{"A", "a@b.example", "1", "r"}, {"B", "none", "", ""}};
    head.location = "here";
    head.comment = " two\nlines ";
    head.process = Process::Transfer;
    head.ignored = {"ascmhl", "a&b/"};
    head.metadata = {{"serial", "0<1"}, {"path", ""}};
    return head;
}

std::string Written(const Tree& tree, const ManifestHead& head,
                    std::span<const Reference> references = {}) {
    std::string text;
    const platform::IoStatus status =
        WriteManifest(head, {&tree, kScope, {}, references}, [&](std::string_view bytes) {
            text.append(bytes);
            return platform::IoStatus{};
        });
    EXPECT_TRUE(status) << status.reason;
    return text;
}

TEST(Manifest, WhatIsWrittenIsReadInPiecesOfAnySize) {
    const std::vector<Reference> references = {{"A/ascmhl/1.mhl", HashOf("", HashFormat::C4), 0}};
    const std::string text = Written(OddTree(), OddHead(), references);
    for (const std::size_t piece : {std::size_t{1}, std::size_t{7}, kWhole}) {
        Notes notes;
        ASSERT_TRUE(notes.Read(text, piece));
        EXPECT_THAT(notes.records,
                    ElementsAre(" A & <B> /line\nbreak\rtab\t\"' 3 0 "
                                "900150983cd24fb0d6963f7d28e17f72:1 44bc2cf5ad770999:3 < was & is",
                                HasSubstr(" A & <B> / "),
                                "\xC3\xA9\xF0\x9F\x8E\xAC - - 5c80c09683041123:2",
                                HasSubstr("ref A/ascmhl/1.mhl c459ds")));
        EXPECT_THAT(notes.faults, IsEmpty());
        EXPECT_THAT(notes.remarks, IsEmpty());
        const ManifestHead& head = notes.head;
        const ManifestHead wanted = OddHead();
        EXPECT_EQ(head.created, wanted.created);
        EXPECT_EQ(head.hostName + head.tool + head.toolVersion + head.location + head.comment,
                  "a & bnqp21 <2>here two\nlines ");
        EXPECT_EQ(head.process, Process::Transfer);
        EXPECT_EQ(head.ignored, wanted.ignored);
        ASSERT_EQ(head.authors.size(), 2U);
        EXPECT_EQ(head.authors[0].email + head.authors[0].phone + head.authors[0].role,
                  "a@b.example1r");
        EXPECT_EQ(head.authors[1].name + head.authors[1].email, "B"); // no valid address
        ASSERT_EQ(head.metadata.size(), 2U);
        EXPECT_EQ(head.metadata[0].name + head.metadata[0].value, "serial0<1");
        EXPECT_FALSE(head.root); // a file has no hash
    }
}

TEST(Manifest, AFailingSinkEndsTheWriting) {
    Tree tree;
    for (int i = 0; i < 5000; ++i) {
        tree.SetHashes(*tree.AddFile(kScope, std::to_string(i), 0, 0),
                       HashOf("", FormatSet::All()));
    }
    int calls = 0;
    const platform::IoStatus status = WriteManifest({}, {&tree}, [&](std::string_view) {
        return ++calls < 2 ? platform::IoStatus{}
                           : platform::IoStatus{platform::IoError::NoSpace, "full"};
    });
    EXPECT_EQ(status.error, platform::IoError::NoSpace);
    EXPECT_EQ(calls, 2);
}

TEST(Manifest, OneThatIsCutOffAnywhereIsNoWholeOne) {
    const std::string text = Written(OddTree(), OddHead());
    const std::size_t end = text.find_last_of('>');
    for (std::size_t length = 0; length <= end; ++length) {
        Notes notes;
        EXPECT_FALSE(notes.Read(text.substr(0, length), kWhole)) << length;
        EXPECT_FALSE(notes.faults.empty()) << length;
    }
}

// As another tool may write it: a prefix, blanks, its own order, metadata with any elements.
constexpr std::string_view kForeign = R"(<?xml version="1.0"?>
<m:hashlist xmlns:m="urn:ASC:MHL:v2.0" version="2.0">
<m:metadata><path>x</path><m:hash/></m:metadata>
<m:hashes>
<m:hash><m:xxh64 action="original"> 44bc2cf5ad770999
</m:xxh64><m:path size="3">A/f</m:path><m:metadata><m:md5>1</m:md5></m:metadata></m:hash>
<m:directoryhash><m:path>A/</m:path><m:content/><m:structure/></m:directoryhash>
</m:hashes>
<m:creatorinfo><m:creationdate>2026-11-21T09:09:10.5+01:00</m:creationdate></m:creatorinfo>
<m:processinfo><m:process> in-place </m:process></m:processinfo>
</m:hashlist>)";

struct ForeignCase {
    std::string from;
    std::string to;
    std::vector<std::string> faults; ///< each begins so
    std::size_t records = 2;
};

TEST(Manifest, AnotherToolsOneIsRead) {
    Notes notes;
    ASSERT_TRUE(notes.Read(kForeign, kWhole));
    EXPECT_THAT(notes.records, ElementsAre("A/f 3 - 44bc2cf5ad770999:1", "A/  "));
    EXPECT_THAT(notes.faults, IsEmpty());
    EXPECT_EQ(notes.head.created, test::SealedFolder::kFirstTime);
    EXPECT_EQ(notes.head.process, Process::InPlace);
}

TEST(Manifest, EachFaultIsToldWithItsLineAndTheRestIsRead) {
    const std::string hash = "<m:xxh64 action=\"original\"> 44bc2cf5ad770999\n</m:xxh64>";
    const std::string longPath = std::string(kMaxPathBytes + 1, 'a');
    std::string deepPath;
    for (std::size_t i = 0; i <= kMaxPathParts; ++i) {
        deepPath += "a/";
    }
    const ForeignCase kCases[] = {
        {"44bc2cf5ad770999", "44BC2CF5AD770999", {"6: the xxh64 is written in capital letters"}},
        {hash, "", {"5: there is no hash of A/f"}},
        {hash, "<m:sha256>00</m:sha256>", {"5: sha256 is no format"}},
        {hash, hash + hash, {"7: there are two hashes xxh64"}},
        {"\"original\"", "\"copied\"", {"6: the xxh64 has the unknown action copied"}},
        {"size=\"3\"", "size=\"-3\"", {"6: the size \"-3\" is no number of bytes"}},
        {"size=\"3\"", "size=\"99999999999999999999\"", {"6: the size \"9"}},
        {">A/f<", "><", {"6: the path \"\" has a part without a name"}, 1},
        {">A/f<", ">/A/f<", {"6: the path \"/A/f\" is no path below"}, 1},
        {">A/f<", ">A/../../f<", {"6: the path \"A/../../f\" leads out"}, 1},
        {">A/f<", ">./f<", {"6: the path \"./f\" leads out"}, 1},
        {">A/f<", ">A//f<", {"6: the path \"A//f\" has a part without a name"}, 1},
        {">A/f<", ">A/f/<", {"6: the path \"A/f/\" has a part without a name"}, 1},
        {">A/f<", ">" + longPath + "<", {"6: the path \"aaa"}, 1},
        {">A/f<", ">" + deepPath + "a<", {"6: the path \"a/a/"}, 1},
        {">A/f<",
         ">" + std::string(70'000, 'a') + "<",
         {"6: a text is longer than 65536 bytes", "6: the path"},
         1},
        {"<m:path size=\"3\">A/f</m:path>", "", {"5: a record has no path"}, 1},
        {"<m:path size=\"3\">A/f</m:path>",
         "<m:path>A/f</m:path><m:path>g</m:path>",
         {"6: a record has two paths"}},
        {">A/f<", ">A\x01<", {"6: "}, 0},
        {">A/f<", ">A\xFF<", {"6: "}, 0},
        {">A/f<", ">&lol;<", {"6: "}, 0},
        {"version=\"2.0\"", "version=\"1.1\"", {"2: the version is \"1.1\" instead of 2.0"}},
        {"urn:ASC:MHL:v2.0", "urn:other", {"2: is another kind of document: hashlist"}, 0},
        {"<m:hashlist",
         "<!DOCTYPE a [<!ENTITY lol \"x\">]><m:hashlist",
         {"2: the file carries a document type"},
         0},
        {"<m:hashes>",
         "<" + std::string(200'000, 'm') + ">",
         {"4: a tag, comment or instruction is too long"},
         0},
    };
    for (const ForeignCase& each : kCases) {
        Notes notes;
        notes.Read(ReplacedIn(std::string(kForeign), each.from, each.to), kWhole);
        ASSERT_EQ(notes.faults.size(), each.faults.size())
            << each.to.substr(0, 100) << testing::PrintToString(notes.faults).substr(0, 1000);
        for (std::size_t i = 0; i < each.faults.size(); ++i) {
            EXPECT_EQ(notes.faults[i].substr(0, each.faults[i].size()), each.faults[i]);
        }
        EXPECT_EQ(notes.records.size(), each.records) << each.to.substr(0, 100);
    }
}

TEST(Manifest, WhatIsMerelyOddIsARemark) {
    const ForeignCase kCases[] = {
        {" action=\"original\"", "", {"6: the xxh64 has no action"}},
        {"in-place", "moved", {"10: the process is not known"}},
        {"2026-11-21T09:09:10.5+01:00", "yesterday", {"9: the date of creation is none"}},
        {"size=\"3\"", "lastmodificationdate=\"x\"", {"6: the date \"x\" is none"}},
        {"<m:content/>",
         "<m:content><m:xxh64>44bc2cf5ad770999</m:xxh64></m:content>",
         {"7: content and structure of A have different formats"}},
        {"</m:hashes>", "<m:x><m:y/></m:x></m:hashes>", {"8: the element x is not known"}},
    };
    for (const ForeignCase& each : kCases) {
        Notes notes;
        EXPECT_TRUE(notes.Read(ReplacedIn(std::string(kForeign), each.from, each.to), kWhole));
        EXPECT_EQ(notes.remarks, each.faults);
        EXPECT_THAT(notes.faults, IsEmpty());
        EXPECT_EQ(notes.records.size(), 2U);
    }
}

TEST(Manifest, NamesThatCannotBeRecordedAreTold) {
    struct {
        std::string name;
        std::string fault;
    } const kCases[] = {
        {"plain", ""},
        {" \t\n\r\"&<>'", ""},
        {"\xC3\xA9", ""},
        {"\xEF\xBF\xBD", ""},
        {"a\x7F", ""},
        {"a\x01", "has a control character"},
        {std::string("a\0b", 3), "has a control character"},
        {"\xEF\xBF\xBE", "has a control character"},
        {"\xFF", "is no UTF-8"},
        {"\xC0\xAF", "is no UTF-8"},
        {"\xED\xA0\x80", "is no UTF-8"},
        {"\xC3", "is no UTF-8"},
    };
    for (const auto& each : kCases) {
        EXPECT_EQ(NameFault(each.name), each.fault) << testing::PrintToString(each.name);
    }
}

} // namespace
} // namespace nqp2::mhl
