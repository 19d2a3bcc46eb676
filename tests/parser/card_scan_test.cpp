// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/DebugOutput.h"

#include "NQP2ParserU/XmlLimits.h"
#include "platform/file_system.h"
#include "platform/read_ahead.h"
#include "tests/avchd/avchd_bytes.h"
#include "tests/parser/card_test.h"
#include "tests/parser/clip_show.h"
#include "tests/support/child_process.h"
#include "tests/support/faulty_file_system.h"

#include <filesystem>
#include <mutex>
#include <set>
#include <sys/resource.h>
#include <thread>

namespace nqp2::clips {
namespace {

using test::FaultyFileSystem;
using test::Operation;
using testing::ElementsAre;
using testing::IsEmpty;

class CardScanTest : public CardTest {
protected:
    /// The titles of the XML files as the file system lists them.
    std::vector<std::string> ListedTitles() const {
        std::vector<platform::FolderEntry> entries;
        EXPECT_TRUE(platform::Files().List(m_card.Folder().Path("CONTENTS/CLIP"), entries));
        std::vector<std::string> titles;
        for (const platform::FolderEntry& entry : entries) {
            titles.push_back(entry.name.substr(0, entry.name.rfind('.')));
        }
        return titles;
    }
    void AddClips(int count) const {
        for (int i = 0; i < count; ++i) {
            m_card.AddClip(std::to_string(7919 * i % 10007)); // neither ascending nor descending
        }
    }
};

TEST_F(CardScanTest, FollowsTheFileSystemsOrder) {
    AddClips(100);
    EXPECT_EQ(ScannedNames(), ListedTitles());
}

TEST_F(CardScanTest, AppendsToTheArray) {
    m_card.AddClip("0001AA");
    CArray<_tag_P2Clip> clips;
    clips.SetSize(1);
    EXPECT_EQ(m_parser.LoadClipEx(m_card.Root(), clips, 0), 0);
    EXPECT_EQ(m_parser.LoadClipEx(m_card.Root(), clips, 0), 0);
    EXPECT_EQ(m_parser.LoadClipEx(m_card.Root() + L"x", clips, 0), 1);
    EXPECT_THAT(NamesOf(clips), ElementsAre("", "0001AA", "0001AA"));
}

TEST_F(CardScanTest, ACardWithoutClipsIsReadAndOneWithoutContentsIsNot) {
    EXPECT_THAT(ScannedNames(), IsEmpty());
    std::filesystem::remove(m_card.Folder().Path("CONTENTS/CLIP"));
    EXPECT_THAT(ScannedNames(), IsEmpty());
    EXPECT_THAT(Remarks(), IsEmpty());
    CArray<_tag_P2Clip> clips;
    EXPECT_EQ(m_parser.LoadClipEx(test::CardBuilder(false).Root(), clips, 0), 1);
    EXPECT_EQ(m_parser.LoadClipEx(L"", clips, 0), 1);
}

TEST_F(CardScanTest, KeepsTheDigitOnlyWhenAsked) {
    m_card.AddClip("0001AA", {{"GlobalClipID", "060A2B340101010501010D4313000006"}});
    EXPECT_EQ(Scan(0)[0].ClipIdDigit, -1);
    EXPECT_EQ(Scan(1)[0].ClipIdDigit, 6);
    EXPECT_EQ(Scan(-1)[0].ClipIdDigit, 6);
}

TEST_F(CardScanTest, OneRecordServesAllAndCarriesOnlyTheUnreadDate) {
    m_card.AddClip("0001AA");
    m_card.AddClip("0001AB");
    const std::vector<std::string> order = ListedTitles();
    m_card.AddClip(order[0], {{kStart, "2005-02-01T06:00:00+08:00"},
                              {"EssenceList/Video/Codec", "AVC-LongG422"},
                              {"EssenceList/Video/Codec@Class", "50"},
                              {"EssenceList/Video/BitDepth", "10"},
                              {"EssenceList/Video/TimecodeType", "NonDrop"},
                              {"EssenceList/Audio/BitsPerSample", "24"},
                              {"Relation/GlobalShotID", "1"},
                              {"Relation/Connection/Top/ClipName", "TOP"},
                              {"Relation/Connection/Top/P2SerialNo.", "T1"},
                              {"ClipMetadata/MemoList/Memo/Text", "memo"},
                              {"ClipMetadata/Proxy/ProxyElementList/+ProxyAudio", ""},
                              {"ClipMetadata/Proxy/ProxyElementList/+ProxyAudio", ""}});
    m_card.AddClip(order[1], {{kStart, "2005-02-01"}});
    const CArray<_tag_P2Clip> clips = Scan();
    ASSERT_EQ(clips.GetSize(), 2);
    const ClipShow second(clips[1], m_card.Contents());
    EXPECT_EQ(second.Fields(), (ClipShow::Shown{{"ShootStartTime", "38384.25000"},
                                                {"StartDate", "2005-02-01"},
                                                {"ClipName", order[1]},
                                                {"UserClipName", order[1]},
                                                {"ClipIdDigit", "0"},
                                                {"EssenceMask", "1"},
                                                {"ProxyAudioChannels", "-1"},
                                                {"ProxyExt", ".MP4"},
                                                {"VideoPath", "VIDEO\\" + order[1] + ".MXF"},
                                                {"XmlPath", "CLIP\\" + order[1] + ".XML"}}));
}

TEST_F(CardScanTest, FindsALowerCaseCard) {
    const test::TempFolder& folder = m_card.Folder();
    std::filesystem::remove_all(folder.Path("CONTENTS"));
    folder.Write("contents/clip/0001ab.xml", test::ClipXml({{"ClipName", "0001AB"}}));
    folder.Write("contents/icon/0001ab.bmp");
    folder.Write("contents/Proxy/0001aB.Mp4");
    const CArray<_tag_P2Clip> clips = Scan();
    ASSERT_EQ(clips.GetSize(), 1);
    EXPECT_EQ(Below(clips[0].XmlPath), "CLIP\\0001ab.XML");
    EXPECT_EQ(Below(clips[0].IconPath), "ICON\\0001ab.BMP");
    EXPECT_EQ(Below(clips[0].ProxyPath), "PROXY\\0001ab.MP4");
}

TEST_F(CardScanTest, ReadsFilesWhoseNamesAreNoUtf8) {
    m_card.AddFile("CLIP/\xFF\xC3.XML", test::ClipXml({}));
    m_card.AddFile("ICON/\xFF\xC3.BMP");
    const CArray<_tag_P2Clip> clips = Scan();
    ASSERT_EQ(clips.GetSize(), 1);
    EXPECT_EQ(PosixPath(clips[0].XmlPath), m_card.Folder().Path("CONTENTS/CLIP/\xFF\xC3.XML"));
    EXPECT_FALSE(clips[0].IconPath.IsEmpty());
    _tag_P2Clip clip;
    EXPECT_EQ(m_parser.LoadClipInfo(m_card.Root(), clips[0].ClipName, clip), 0);
}

TEST_F(CardScanTest, ASlowMediumIsReadAheadByAsManyThreadsAsThereAreWithTheSameOutcome) {
    const auto outcome = [&] {
        std::vector<ClipShow::Shown> clips;
        for (const _tag_P2Clip& clip : Scan()) {
            clips.push_back(ClipShow(clip, m_card.Contents()).Fields());
        }
        CArray<tag_P2EDL> edls;
        CArray<_tag_P2Clip> others;
        EXPECT_EQ(m_parser.LoadEdl(m_card.Root(), edls), 0);
        EXPECT_EQ(m_parser.LoadAVCHDClip(m_card.Root(), others), 0);
        std::vector<CString> edlNames;
        for (const tag_P2EDL& edl : edls) {
            edlNames.push_back(edl.Name);
        }
        return std::tuple(clips, Remarks(), edlNames, NamesOf(others));
    };
    AddClips(60);
    for (int i = 0; i < 20; ++i) {
        m_card.Folder().Write("EDITLIST/P" + std::to_string(100 + i) + ".XML",
                              "<P2Main xmlns=\"EditMetadata\"/>");
        m_card.Folder().Write("BDMV/CLIPINF/000" + std::to_string(10 + i) + ".CPI",
                              test::ClipBytes({}));
    }
    const std::string large(300'000, ' '); // beyond what is read ahead
    for (int i = 0; i < 5; ++i) {
        const std::string number = std::to_string(i);
        m_card.AddFile("CLIP/broken" + number + ".XML", "<P2Main>" + number);
        m_card.AddClip("large" + number, {{"Duration", number}, {"Filler", large}});
        m_card.Folder().MakeFolder("CONTENTS/CLIP/folder" + number + ".XML");
    }
    const auto plain = outcome();
    ASSERT_EQ(std::get<0>(plain).size(), 65U);
    ASSERT_EQ(std::get<1>(plain).size(), 10U);
    ASSERT_EQ(std::get<2>(plain).size(), 20U);
    ASSERT_EQ(std::get<3>(plain).size(), 20U);

    FaultyFileSystem slow;
    std::mutex lock;
    std::set<std::thread::id> readers;
    slow.SetDelay(Operation::Read, std::chrono::milliseconds(1));
    slow.SetHook([&](Operation operation, const std::string&) {
        const std::lock_guard guard(lock);
        if (operation == Operation::Read) {
            readers.insert(std::this_thread::get_id());
        }
    });
    const platform::ScopedFileSystem scope(slow);
    for (int threads = 0; threads <= 12; ++threads) { // each of the three scans asks for four
        readers.clear();
        const platform::ScopedThreadLimit limit(threads);
        EXPECT_EQ(outcome(), plain) << threads;
        EXPECT_EQ(readers.size() > 1, threads > 0) << threads;
    }
    // And as the system itself refuses them.
    std::filesystem::permissions(m_card.Folder().Path(), std::filesystem::perms(0755));
    EXPECT_EQ(test::RunInChild([&] {
                  constexpr rlimit kNone = {0, 0};
                  readers.clear();
                  const bool limited =
                      test::BecomeOrdinaryUser() && setrlimit(RLIMIT_NPROC, &kNone) == 0;
                  return limited && outcome() == plain && readers.size() == 1 ? 0 : 1;
              }),
              0);
}

TEST_F(CardScanTest, AsksTheFileSystemOnceAClip) {
    FaultyFileSystem counted;
    const platform::ScopedFileSystem scope(counted);
    std::vector<CString> texts;
    const TextSink before = SetDebugOutput([&](const CString& text) { texts.push_back(text); });
    const auto callsFor = [&](int clips) {
        AddClips(clips);
        for (const char* const folder : {"VIDEO", "AUDIO", "ICON", "PROXY"}) {
            m_card.AddFile(std::string(folder) + "/other");
        }
        counted.ResetCalls();
        EXPECT_EQ(ScannedNames().size(), static_cast<std::size_t>(clips));
        return counted.Calls();
    };
    const std::uint64_t few = callsFor(20);
    EXPECT_EQ(callsFor(80) - few, 60U);
    EXPECT_LE(few, 20U + 10U) << "and a constant number for the folders";
    SetDebugOutput(before);
    EXPECT_THAT(texts, testing::Each(CString(L"selectSingleNode Failed"))) << "no frame rate";
    EXPECT_EQ(texts.size(), 20U + 80U);
}

TEST_F(CardScanTest, TheHostsSizeLimitHoldsForSmallFilesToo) {
    m_card.AddClip("0001AA");
    const std::uint64_t before = MaxXmlFileSize();
    SetMaxXmlFileSize(100);
    EXPECT_THAT(ScannedNames(), IsEmpty());
    SetMaxXmlFileSize(before);
    EXPECT_THAT(Remarks(), ElementsAre(Remark("CLIP\\0001AA.XML", SkipReason::TooLarge)));
}

class CardFormatTest : public CardTest {
protected:
    void AddFormat(const std::string& codec, const std::string& rate, const std::string& cls) {
        m_card.AddClip("0001AA", {{"EditUnit", "1/25"},
                                  {"EssenceList/Video/Codec", codec},
                                  {"EssenceList/Video/Codec@Class", cls},
                                  {"EssenceList/Video/FrameRate", rate}});
    }
    DiskFormat Format() {
        DiskFormat format;
        EXPECT_EQ(m_parser.GetDiskFormat(m_card.Root(), format), 0);
        return format;
    }
};

TEST_F(CardFormatTest, TheCodecNameAloneDecidesTheCodeType) {
    constexpr std::pair<const char*, int> kCases[] = {
        {"DV25_420", 0},
        {"DV50_422", 1},
        {"DV100_1080/50i", 2},
        {"DV100_720/50p", 15},
        {"AVC-I_1080/50i", 5},
        {"AVC-I_1080/25p", 17},
        {"AVC-I_720/59.94p", 38},
        {"DV100_720/59.94p", 33},
        {"AVCHD_1280_720_50p", 204},
        {"AVC-LongG422", 0},
        {"", 0},
    };
    for (const auto& [codec, expected] : kCases) {
        // Rates and classes that would change the exact decision.
        for (const auto& [rate, cls] : {std::pair("59.94p", "200"), std::pair("25p", "50")}) {
            AddFormat(codec, rate, cls);
            eCodeType type = CT_AVCI200_720_50P;
            eP2_VIDEO_STANDARD standard = VS_2398P;
            EXPECT_EQ(m_parser.GetDiskFormat(m_card.Root(), type, standard), 0);
            EXPECT_EQ(type, expected) << codec;
            EXPECT_EQ(standard, rate[0] == '5' ? VS_5994P : VS_50I) << codec;
            EXPECT_EQ(Format().codeType, type) << codec;
            EXPECT_EQ(Format().standard, standard) << codec;
        }
    }
}

TEST_F(CardFormatTest, Class50IsToldForOneCodecOnly) {
    constexpr std::tuple<const char*, const char*, int> kCases[] = {
        {"AVC-I_1080/50i", "50", 1},
        {"AVC-I_1080/50i", "100", 0},
        {"avc-i_1080/50i", "50", 0},
        {"AVC-I_720/50p", "50", 0},
    };
    for (const auto& [codec, cls, class50] : kCases) {
        AddFormat(codec, "50i", cls);
        const DiskFormat format = Format();
        EXPECT_TRUE(format.found);
        EXPECT_EQ(format.class50, class50) << codec << " class " << cls;
        EXPECT_EQ(format.codec, CString(platform::TextFromUtf8(codec)));
        EXPECT_EQ(format.frameRate, L"50i");
        EXPECT_EQ(format.editUnit, L"1/25");
    }
}

TEST_F(CardFormatTest, TheFirstFileThatLoadsDecides) {
    AddFormat("DV50_422", "50i", "");
    m_card.Folder().MakeFolder("CONTENTS/CLIP/0000AA.XML");
    for (const char* const broken : {"0000AB", "0001AC", "0002AA", "._0001AA"}) {
        m_card.AddFile(std::string("CLIP/") + broken + ".XML", "<P2Main>");
    }
    EXPECT_EQ(Format().codec, L"DV50_422");
    m_card.AddClip("0003AA", {{"EssenceList/Video/Codec", "DV25_420"}});
    EXPECT_EQ(Format().codec, ScannedNames().front() == "0001AA" ? L"DV50_422" : L"DV25_420");
}

TEST_F(CardFormatTest, WithoutALoadableClipTheOutputsStay) {
    ExpectNoFormat(m_parser, m_card.Root(), 0);
    m_card.AddFile("CLIP/0001AA.XML", "no clip");
    m_card.Folder().MakeFolder("CONTENTS/CLIP/0001AB.XML");
    ExpectNoFormat(m_parser, m_card.Root(), 0);
    ExpectNoFormat(m_parser, test::CardBuilder(false).Root(), 1);
    ExpectNoFormat(m_parser, L"", 1);
    m_card.AddFile("CLIP/0001AA.XML", "<Other/>");
    const DiskFormat format = Format();
    EXPECT_TRUE(format.found) << "a file without the elements still decides";
    EXPECT_TRUE(format.codec.IsEmpty());
    EXPECT_EQ(format.codeType, CT_DV25_50I);
}

class FreeNameTest : public CardTest {
protected:
    void ExpectFree(const std::string& name, __int64 tried) {
        CString found;
        __int64 count = 0;
        EXPECT_EQ(m_parser.CheckName(found, m_card.Root(), count), 1);
        EXPECT_EQ(platform::Utf8FromText(found.View()), name);
        EXPECT_EQ(count, tried);
    }
};

TEST_F(FreeNameTest, CandidatesFollowEachOtherWithoutCarryAndEndAfter68) {
    std::string name = "0001AA";
    __int64 tried = 0;
    const auto takeUpTo = [&](std::size_t place, char last) {
        while (name[place] != last) {
            ++name[place];
            ExpectFree(name, ++tried);
            m_card.AddFile("VIDEO/" + name + ".MXF");
        }
    };
    ExpectFree(name, ++tried);
    m_card.AddFile("VIDEO/0001AA.MXF");
    takeUpTo(5, 'Z');
    takeUpTo(4, 'Z');
    takeUpTo(3, '9');
    takeUpTo(2, '9');
    EXPECT_EQ(name, "0099ZZ");
    CString untouched = L"mine";
    EXPECT_EQ(m_parser.CheckName(untouched, m_card.Root(), tried), 0);
    EXPECT_EQ(m_parser.CheckName(untouched, m_card.Root()), 0);
    EXPECT_EQ(untouched, L"mine");
    EXPECT_EQ(tried, 68);
}

TEST_F(FreeNameTest, NoNameIsFreeInAFolderThatCannotBeRead) {
    FaultyFileSystem files;
    files.Fail({.error = platform::IoError::Denied, .operation = Operation::List});
    const platform::ScopedFileSystem inUse(files);
    CString untouched = L"mine";
    EXPECT_EQ(m_parser.CheckName(untouched, m_card.Root()), 0);
    EXPECT_EQ(untouched, L"mine");
}

TEST_F(FreeNameTest, OnlyVideoFilesTakeANameInAnyLetterCase) {
    CString name;
    EXPECT_EQ(m_parser.CheckName(name, L"/nonexistent"), 1) << "an absent card takes none";
    EXPECT_EQ(name, L"0001AA");
    m_card.AddClip("0001AA");
    m_card.AddFile("AUDIO/0001AA00.MXF");
    ExpectFree("0001AA", 1);
    m_card.AddFile("VIDEO/0001aa.mxf");
    ExpectFree("0001AB", 2);
}

} // namespace
} // namespace nqp2::clips
