// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/ClipMetadata.h"
#include "NQP2ParserU/IngestList.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "tests/avchd/avchd_bytes.h"
#include "tests/support/card_builder.h"
#include "tests/support/child_process.h"
#include "xml/dom/quick_parser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <iostream>
#include <malloc.h>
#include <memory>
#include <sys/resource.h>

namespace nqp2::parser {
namespace {

/// What a scan leaves: its records, kept alive, and how many files it read and left out.
struct Outcome {
    std::shared_ptr<void> results;
    std::int64_t read = 0;
    std::int64_t left = 0;
};
using Load = std::function<Outcome(const CString& root)>;

/// By a function (parser, root, records, report).
template <class Record>
Load Loads(auto load) {
    return [load](const CString& root) -> Outcome {
        CNQP2Parser parser;
        parser.Init();
        const auto records = std::make_shared<CArray<Record>>();
        ScanReport report;
        load(parser, root, *records, report);
        parser.Release(); // what the reader itself keeps is no result
        return {records, records->GetSize(), report.skipped.GetSize()};
    };
}

const Load kLoadClips = Loads<_tag_P2Clip>([](auto& parser, auto& root, auto& clips, auto& report) {
    parser.LoadClipEx(root, clips, 0, report);
});
const Load kLoadEdls = Loads<tag_P2EDL>([](auto& by, auto&... all) { by.LoadCardEdls(all...); });
const Load kLoadAvchdClips =
    Loads<_tag_P2Clip>([](auto& by, auto&... all) { by.LoadAVCHDClip(all...); });
const Load kLoadPlaylists =
    Loads<tag_P2EDL>([](auto& by, auto&... all) { by.LoadCardPlaylists(all...); });
const Load kLoadMetadata = [](const CString& root) -> Outcome {
    ClipMetadataReader reader;
    _tag_P2Clip clip;
    clip.XmlPath = root + L"\\CONTENTS\\CLIP\\0000AA.XML";
    const auto metadata = std::make_shared<ClipMetadata>();
    CString problem;
    const bool read = reader.Read(clip, *metadata, problem) == MetadataStatus::Read;
    return {metadata, read ? 1 : 0, read ? 0 : 1};
};
const Load kLoadIngest = [](const CString& root) -> Outcome {
    const auto list = std::make_shared<IngestList>();
    const bool read = LoadIngestList(root, *list);
    return {list, read ? 1 : 0, read ? 0 : 1};
};

/// A reader, and the beginning and end of a file for it; "#" in the name is the file's number.
struct Reader {
    const char* name;
    Load load;
    const char* file;
    std::string head;
    std::string tail;
};

const Reader kClips = {"clips", kLoadClips, "CONTENTS/CLIP/000#AA.XML", "<P2Main><ClipContent>",
                       "</ClipContent></P2Main>"};
const Reader kMetadata = {"metadata", kLoadMetadata, "CONTENTS/CLIP/000#AA.XML",
                          "<P2Main><ClipContent>", "</ClipContent></P2Main>"};
const Reader kEdls = {"edit lists", kLoadEdls, "EDITLIST/P00#.XML",
                      "<P2Main xmlns='EditMetadata'><EditContent><TrackList><ClipTrack><EventList>",
                      "</EventList></ClipTrack></TrackList></EditContent></P2Main>"};
const Reader kIngest = {"ingest list", kLoadIngest, "USERDATA/Ingest.xml", "<Media>", "</Media>"};
const Reader kAvchdClips = {"AVCHD clips", kLoadAvchdClips, "BDMV/CLIPINF/0000#.CPI", "", ""};
const Reader kPlaylists = {"playlists", kLoadPlaylists, "BDMV/PLAYLIST/0000#.MPL", "", ""};

/// Files for a reader, and what must become of each.
struct Hostile {
    const Reader* reader;
    std::string name;
    std::string head; ///< between the reader's head and the pieces
    std::string piece;
    std::size_t bytes; ///< that many of pieces at least
    std::string tail;
    int read = -1; ///< files that give results; -1: either way
    int files = 1;
};

/// An element's beginning, or its end, many times; "#" is replaced by the number of each.
std::string Nested(const std::string& part, int depth) {
    std::string text;
    for (int i = 0; i < depth; ++i) {
        const std::size_t place = part.find('#');
        text += place == std::string::npos ? part
                                           : std::string(part).replace(place, 1, std::to_string(i));
    }
    return text;
}

/// Floods that no reader has a use for. The smaller ones come close to the limit of a document,
/// the late ones to that of what is read quickly, which is left to libxml2 only at its end.
std::vector<Hostile> Floods() {
    constexpr std::size_t kSmall = 1'300'000;
    constexpr std::size_t kLarge = 12'000'000;
    constexpr std::size_t kLate = dom::kLargestQuickDocument - 300; // for head, tail, half a piece
    std::vector<Hostile> rows;
    for (const Reader* const reader : {&kEdls, &kIngest}) {
        rows.push_back({reader, "elements", "", "<a/>", kSmall, ""});
        rows.push_back({reader, "elements, late", "", "<a/>", kLate, "<?p?>"});
        rows.push_back({reader, "text, late", "", "<a>text of some length</a>", kLate, "<?p?>"});
    }
    for (const char* const piece :
         {"<a/>", "x<a/>", "x<?p?>", "<a>text of some length</a>", "long text without any use ",
          "<!--x--><?p d?>", "<a b='' c='' d='' e='' f=''/>", "<p:a xmlns:p='u'/>", "&#65;",
          "<b><b><b><b>x</b></b></b></b>", "<![CDATA[x]]>"}) {
        rows.push_back({&kClips, piece, "", piece, kSmall, ""});
        rows.push_back({&kClips, piece, "", piece, kLarge, ""});
        rows.push_back({&kClips, std::string(piece) + ", late", "", piece, kLate, "<?p?>"});
        rows.push_back({&kMetadata, piece, "", piece, kSmall, ""});
    }
    return rows;
}

/// Values that become results, many, long or within each other.
std::vector<Hostile> Values() {
    const std::string memoOpen = "<ClipMetadata><MemoList><Memo><Offset>#</Offset><Text>";
    const std::string memoClose = "</Text></Memo></MemoList></ClipMetadata>";
    constexpr int kClipDepth = 40; // as deep as a document may be
    constexpr int kEventDepth = 34;
    const std::string inMemos = memoOpen + Nested(kClips.head + memoOpen, kClipDepth);
    const std::string outOfMemos = Nested(memoClose + kClips.tail, kClipDepth) + memoClose;
    const std::string noteOpen = "<Event><Note>";
    const std::string noteClose = "</Note></Event>";
    const std::string inNotes = noteOpen + Nested(kEdls.head + noteOpen, kEventDepth);
    const std::string outOfNotes = Nested(noteClose + kEdls.tail, kEventDepth) + noteClose;
    const std::string longNote = noteOpen + std::string(std::size_t{1} << 20, 'x') + noteClose;
    const std::string list = "<ClipMetadata><MemoList>";
    const std::string listEnd = "</MemoList></ClipMetadata>";
    const std::string memo = "<Memo><Offset>1</Offset><Text>x</Text></Memo>";
    const std::string segment = "<Segment InPoint='1' OutPoint='2'/>";
    constexpr std::size_t kEvents = 65'536; // that many are read
    constexpr std::size_t kEvent = 8;       // bytes of an empty one
    const std::string usual =
        "<Event><Offset>1000</Offset><Duration>250</Duration><Source><P2SerialNo.>ABC12D0001"
        "</P2SerialNo.><ClipName>0001AB</ClipName><GlobalClipID>060A2B340101010501010D4313000000"
        "798AE7C6A09E4B6FA5A11F6E2D08E5C0</GlobalClipID><Offset>10</Offset></Source></Event>";
    return {
        {&kClips, "memos", list, memo, 2'000'000, listEnd, 1},
        {&kMetadata, "memos", list, memo, 2'000'000, listEnd, 1},
        {&kMetadata, "texts of a tree", "", "<Text>of the usual length</Text>", 8'000'000, "", 1},
        {&kClips, "nested memos", inMemos, "text ", 2'000'000, outOfMemos, 0},
        {&kEdls, "as many events as are read", "", "<Event/>", kEvents * kEvent, "", 1},
        {&kEdls, "as many usual events", "", usual, kEvents * usual.size(), "", 1},
        {&kEdls, "one event more", "", "<Event/>", (kEvents + 1) * kEvent, "", 0},
        {&kEdls, "more than a folder may hold", "", usual, kEvents * usual.size(), "", 4, 6},
        {&kEdls, "as much text as is read", "", longNote, 15 * longNote.size() + 1, "", 1},
        {&kEdls, "more text", "", longNote, 16 * longNote.size() + 1, "", 0},
        {&kEdls, "nested events", inNotes, "text ", 4'000'000, outOfNotes, 0},
        {&kIngest, "clips", "", "<Clip ClipName='a'/>", 1'000'000, "", 1},
        {&kIngest, "segments", "<Clip ClipName='a'>", segment, 1'000'000, "</Clip>", 1},
    };
}

std::string Playlist(std::size_t items, const char* clip, bool marked) {
    test::PlaylistSpec spec;
    spec.items.assign(items, test::ItemSpec{clip});
    for (std::uint32_t i = 0; marked && i < items; ++i) {
        spec.marks.push_back(test::MarkSpec{i});
        spec.shotIds.push_back(test::ClipIdBytes());
    }
    return test::PlaylistBytes(spec);
}

std::vector<Hostile> BinaryFiles() {
    const std::string clip = test::ClipBytes({});
    const std::string zeros(1000, '\0');
    const std::string ones(1000, '\xFF');
    const std::string full = Playlist(16'000, "00000", true);
    const std::string missing = Playlist(16'000, "00099", false);
    return {
        {&kAvchdClips, "a long tail", clip, ones, 7'000'000, "", 1},
        {&kAvchdClips, "longer than is read", clip, zeros, 9'000'000, "", 0},
        {&kPlaylists, "as many items as are read", full, "", 0, "", 1},
        {&kPlaylists, "one item more", Playlist(16'001, "00000", false), "", 0, "", 0},
        {&kPlaylists, "items of a clip that is missing", missing, "", 0, "", 9, 9},
    };
}

/// Writes the row's files piece by piece, so that this process does not grow, and what playlists
/// need. Returns their bytes.
std::uintmax_t Write(const Hostile& row, const test::TempFolder& folder) {
    folder.MakeFolder("CONTENTS");
    folder.Write("BDMV/CLIPINF/00000.CPI", test::ClipBytes({}));
    std::uintmax_t size = 0;
    for (int number = 0; number < row.files; ++number) {
        std::string name = row.reader->file;
        std::replace(name.begin(), name.end(), '#', static_cast<char>('0' + number));
        std::ofstream file(folder.Write(name), std::ios::binary);
        file << row.reader->head << row.head;
        for (std::size_t count = 0; count < row.bytes; count += row.piece.size()) {
            file << row.piece;
        }
        file << row.tail << row.reader->tail << std::flush;
        size += std::filesystem::file_size(folder.Path(name));
    }
    return size;
}

double MebibytesNow() {
    std::ifstream file("/proc/self/statm");
    double pages = 0;
    file >> pages >> pages;
    return pages * getpagesize() / 1024 / 1024;
}

double MebibytesAtPeak() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

/// For a process of its own, where nothing that was freed before makes room.
bool IsInProportion(const Hostile& row, const CString& root, double file) {
    malloc_trim(0);
    const double before = MebibytesNow();
    const Outcome outcome = row.reader->load(root);
    const double whole = MebibytesAtPeak() - before;
    malloc_trim(0);
    const double beyond = whole - (MebibytesNow() - before);
    const bool isAsExpected = outcome.read + outcome.left > 0 && whole <= 64 + 40 * file &&
                              beyond <= 16 + 12 * file &&
                              (row.read < 0 || outcome.read == row.read);
    if (!isAsExpected) {
        std::cerr << "MiB: file " << file << ", whole " << whole << ", beyond results " << beyond
                  << "; files read " << outcome.read << ", left out " << outcome.left << std::endl;
    }
    return isAsExpected;
}

// The whole stays in proportion to the files, and so does what a reader needs beyond its results.
TEST(Memory, OfAnyReaderIsInProportionToTheFile) {
#ifdef NQP2_MEMORY_IS_INSTRUMENTED
    GTEST_SKIP() << "the sanitizer's own memory would be measured";
#endif
    std::vector<Hostile> rows = Floods();
    for (const auto& more : {Values(), BinaryFiles()}) {
        rows.insert(rows.end(), more.begin(), more.end());
    }
    for (const Hostile& row : rows) {
        const test::TempFolder folder;
        const double file = static_cast<double>(Write(row, folder)) / 1024 / 1024;
        const CString root = InterfaceRoot(folder.Path());
        EXPECT_EQ(test::RunInChild([&] { return IsInProportion(row, root, file) ? 0 : 1; }), 0)
            << row.reader->name << ": " << row.name;
    }
}

} // namespace
} // namespace nqp2::parser
