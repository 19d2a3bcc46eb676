// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/IngestList.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "tests/avchd/avchd_bytes.h"
#include "tests/support/card_builder.h"
#include "tests/support/child_process.h"

#include <gtest/gtest.h>

#include <any>
#include <fstream>
#include <malloc.h>
#include <memory>
#include <sys/mman.h>
#include <sys/resource.h>

namespace nqp2::parser {
namespace {

constexpr double kMebibyte = 1024.0 * 1024.0;

/// What a scan leaves: its records, kept alive, and how many files it read and left out.
struct Outcome {
    std::any results;
    std::int64_t read = 0;
    std::int64_t left = 0;
};

template <class Record, class Load>
Outcome Loaded(Load load) {
    CNQP2Parser parser;
    parser.Init();
    auto records = std::make_shared<CArray<Record>>();
    ScanReport report;
    load(parser, *records, report);
    parser.Release(); // what the reader itself keeps is no result
    return {records, records->GetSize(), report.skipped.GetSize()};
}

Outcome LoadClips(const CString& root) {
    return Loaded<_tag_P2Clip>([&](auto& parser, auto& clips, auto& report) {
        parser.LoadClipEx(root, clips, 0, report);
    });
}
Outcome LoadEdls(const CString& root) {
    return Loaded<tag_P2EDL>(
        [&](auto& parser, auto& edls, auto& report) { parser.LoadCardEdls(root, edls, report); });
}
Outcome LoadAvchdClips(const CString& root) {
    return Loaded<_tag_P2Clip>([&](auto& parser, auto& clips, auto& report) {
        parser.LoadAVCHDClip(root, clips, report);
    });
}
Outcome LoadPlaylists(const CString& root) {
    return Loaded<tag_P2EDL>([&](auto& parser, auto& edls, auto& report) {
        parser.LoadCardPlaylists(root, edls, report);
    });
}
Outcome LoadIngest(const CString& root) {
    auto list = std::make_shared<IngestList>();
    const bool read = LoadIngestList(root, *list);
    return {list, read ? 1 : 0, read ? 0 : 1};
}

/// A reader, and the beginning and end of a file for it.
struct Reader {
    const char* name;
    Outcome (*load)(const CString& root);
    const char* file; ///< "#" stands for its number
    std::string head;
    std::string tail;
};

const Reader kClips = {"clips", LoadClips, "CONTENTS/CLIP/000#AA.XML", "<P2Main><ClipContent>",
                       "</ClipContent></P2Main>"};
const Reader kEdls = {"edit lists", LoadEdls, "EDITLIST/P00#.XML",
                      "<P2Main xmlns=\"EditMetadata\"><EditContent><TrackList><ClipTrack>"
                      "<EventList>",
                      "</EventList></ClipTrack></TrackList></EditContent></P2Main>"};
const Reader kIngest = {"ingest list", LoadIngest, "USERDATA/Ingest.xml", "<Media>", "</Media>"};
const Reader kAvchdClips = {"AVCHD clips", LoadAvchdClips, "BDMV/CLIPINF/0000#.CPI", "", ""};
const Reader kPlaylists = {"playlists", LoadPlaylists, "BDMV/PLAYLIST/0000#.MPL", "", ""};

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

/// An element's beginning, or its end, many times; "#" stands for the number of each.
std::string Nested(const std::string& part, int depth) {
    std::string text;
    for (int i = 0; i < depth; ++i) {
        const std::size_t place = part.find('#');
        text += place == std::string::npos
                    ? part
                    : part.substr(0, place) + std::to_string(i) + part.substr(place + 1);
    }
    return text;
}

/// Floods that no reader has a use for. The smaller ones come close to the limit of a document.
std::vector<Hostile> Floods() {
    constexpr std::size_t kSmall = 1'300'000;
    constexpr std::size_t kLarge = 30'000'000;
    std::vector<Hostile> rows = {{&kEdls, "elements", "", "<a/>", kSmall, ""},
                                 {&kIngest, "elements", "", "<a/>", kSmall, ""}};
    for (const char* const piece :
         {"<a/>", "x<a/>", "x<?p?>", "<a>text of some length</a>",
          "long text that nobody asks for ", "<!--x--><?p d?>", "<a b='' c='' d='' e='' f=''/>",
          "<p:a xmlns:p='u'/>", "&#65;", "<b><b><b><b>x</b></b></b></b>", "<![CDATA[x]]>"}) {
        rows.push_back({&kClips, piece, "", piece, kSmall, ""});
        rows.push_back({&kClips, piece, "", piece, kLarge, ""});
    }
    return rows;
}

/// Values that become results, many, long or within each other.
std::vector<Hostile> Values() {
    const std::string memoOpen = "<ClipMetadata><MemoList><Memo><Offset>#</Offset><Text>";
    const std::string memoClose = "</Text></Memo></MemoList></ClipMetadata>";
    const std::string clipOpen = kClips.head + memoOpen;
    const std::string clipClose = memoClose + kClips.tail;
    const std::string eventOpen = kEdls.head + "<Event><Note>";
    const std::string eventClose = "</Note></Event>" + kEdls.tail;
    constexpr int kClipDepth = 40; // as deep as a document may be
    constexpr int kEventDepth = 34;
    constexpr std::size_t kEvent = 8; // bytes of an empty one
    const std::string usual =
        "<Event><Offset>1000</Offset><Duration>250</Duration><Source><P2SerialNo.>ABC12D0001"
        "</P2SerialNo.><ClipName>0001AB</ClipName><GlobalClipID>060A2B340101010501010D4313000000"
        "798AE7C6A09E4B6FA5A11F6E2D08E5C0</GlobalClipID><Offset>10</Offset></Source></Event>";
    return {
        {&kClips, "memos", "<ClipMetadata><MemoList>",
         "<Memo><Offset>1</Offset><Text>x</Text></Memo>", 2'000'000, "</MemoList></ClipMetadata>",
         1},
        {&kClips, "memos of one place", "<ClipMetadata><MemoList>", "<Memo/>", 2'000'000,
         "</MemoList></ClipMetadata>", 1},
        {&kClips, "a long name", "<ClipMetadata><UserClipName>", "long name ", 9'000'000,
         "</UserClipName></ClipMetadata>", 1},
        {&kClips, "nested memos", memoOpen + Nested(clipOpen, kClipDepth), "text ", 2'000'000,
         Nested(clipClose, kClipDepth) + memoClose, 0},
        {&kClips, "dense and nested",
         memoOpen + Nested(clipOpen, kClipDepth) + std::string(700'000, 'x'), "x<a/>", 1'000'000,
         Nested(clipClose, kClipDepth) + memoClose},
        {&kEdls, "as many events as are read", "", "<Event/>", 65'536 * kEvent, "", 1},
        {&kEdls, "as many usual events", "", usual, 65'536 * usual.size(), "", 1},
        {&kEdls, "one event more", "", "<Event/>", 65'537 * kEvent, "", 0},
        {&kEdls, "more lists than a folder may hold", "", usual, 65'536 * usual.size(), "", 4, 6},
        {&kEdls, "as much text as is read", "",
         "<Event><Note>" + std::string(std::size_t{1} << 20, 'x') + "</Note></Event>",
         (std::size_t{16} << 20) + 15 * 28, "", 1},
        {&kEdls, "more text", "",
         "<Event><Note>" + std::string(std::size_t{1} << 20, 'x') + "</Note></Event>",
         std::size_t{17} << 20, "", 0},
        {&kEdls, "dense and nested events",
         "<Event><Note>" + Nested(eventOpen, kEventDepth) + std::string(700'000, 'x'), "<Event/>",
         480'000, Nested(eventClose, kEventDepth) + "</Note></Event>", 0},
        {&kIngest, "clips", "", "<Clip ClipName='a'/>", 1'000'000, "", 1},
        {&kIngest, "segments", "<Clip ClipName='a'>", "<Segment InPoint='1' OutPoint='2'/>",
         1'000'000, "</Clip>", 1},
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
    const auto one = [](const Reader& reader, const char* name, const std::string& bytes, int read,
                        int files = 1) {
        return Hostile{&reader, name, bytes, "", 0, "", read, files};
    };
    return {
        {&kAvchdClips, "a long tail", clip, std::string(1000, '\xFF'), 7'000'000, "", 1},
        {&kAvchdClips, "longer than is read", clip, std::string(1000, '\0'), 9'000'000, "", 0},
        {&kAvchdClips, "nonsense", "HDMV0100", "\xFF\xFF\xFF\x01", 7'000'000, "", 0},
        one(kPlaylists, "as many items as are read", Playlist(16'000, "00000", true), 1),
        one(kPlaylists, "one item more", Playlist(16'001, "00000", false), 0),
        one(kPlaylists, "items of a clip that is missing", Playlist(16'000, "00099", false), 9, 9),
        {&kPlaylists, "longer than is read", Playlist(1, "00000", false), std::string(1000, '\xFF'),
         5'000'000, "", 0},
    };
}

/// Writes the row's files piece by piece, so that this process does not grow, and what playlists
/// need. Returns their bytes.
std::uintmax_t Write(const Hostile& row, const test::TempFolder& folder) {
    folder.MakeFolder("CONTENTS");
    if (row.reader == &kPlaylists) {
        folder.Write("BDMV/CLIPINF/00000.CPI", test::ClipBytes({}));
    }
    std::uintmax_t size = 0;
    for (int number = 0; number < row.files; ++number) {
        std::string name = row.reader->file;
        if (const std::size_t place = name.find('#'); place != std::string::npos) {
            name[place] = static_cast<char>('0' + number);
        }
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

/// Memory in MiB.
struct Usage {
    double whole = 0;   ///< at the peak
    double results = 0; ///< what is left of it with the results
    std::int64_t read = -1;
};

double ResidentNow() {
    std::ifstream file("/proc/self/statm");
    double pages = 0;
    file >> pages >> pages;
    return pages * getpagesize() / kMebibyte;
}

double ResidentPeak() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

/// Measured in a process of its own, where nothing that was freed before makes room.
Usage Measure(const Reader& reader, const CString& root) {
    void* const shared =
        mmap(nullptr, sizeof(Usage), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    auto* const usage = new (shared) Usage;
    const int result = test::RunInChild([&] {
        malloc_trim(0);
        const double before = ResidentNow();
        const Outcome outcome = reader.load(root);
        usage->whole = ResidentPeak() - before;
        malloc_trim(0);
        usage->results = ResidentNow() - before;
        usage->read = outcome.read;
        return outcome.read + outcome.left > 0 ? 0 : 1;
    });
    EXPECT_EQ(result, 0) << "the files were neither read nor left out";
    const Usage measured = *usage;
    munmap(shared, sizeof(Usage));
    return measured;
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
        const double file = static_cast<double>(Write(row, folder)) / kMebibyte;
        const Usage usage = Measure(*row.reader, InterfaceRoot(folder.Path()));
        const double beyond = usage.whole - usage.results;
        SCOPED_TRACE(std::string(row.reader->name) + ": " + row.name + ", MiB: file " +
                     std::to_string(file) + ", whole " + std::to_string(usage.whole) +
                     ", beyond results " + std::to_string(beyond));
        EXPECT_LE(usage.whole, 64 + 40 * file);
        EXPECT_LE(beyond, 16 + 12 * file);
        EXPECT_TRUE(row.read < 0 || usage.read == row.read) << usage.read;
    }
}

} // namespace
} // namespace nqp2::parser
