// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/file_system.h"
#include "platform/read_ahead.h"
#include "tests/clips/card_test.h"
#include "tests/clips/clip_show.h"
#include "tests/support/faulty_file_system.h"

#include <filesystem>
#include <mutex>
#include <set>
#include <thread>

namespace nqp2::clips {
namespace {

using test::FaultyFileSystem;
using test::Operation;
using testing::ElementsAre;
using testing::IsEmpty;

using CardScanTest = CardTest;

TEST_F(CardScanTest, AppendsToTheArrayWhenTheCardHasContents) {
    CArray<_tag_P2Clip> clips;
    clips.SetSize(1);
    m_card.AddClip("0001AA", {{"GlobalClipID", "060A2B340101010501010D4313000006"}});
    EXPECT_EQ(m_parser.LoadClipEx(m_card.Root(), clips, 0), 0);
    EXPECT_EQ(m_parser.LoadClipEx(m_card.Root(), clips, -1), 0);
    EXPECT_EQ(m_parser.LoadClipEx(test::CardBuilder(false).Root(), clips, 0), 1);
    EXPECT_EQ(m_parser.LoadClipEx(L"", clips, 0), 1);
    ASSERT_THAT(NamesOf(clips), ElementsAre("", "0001AA", "0001AA"));
    EXPECT_EQ(clips[1].ClipIdDigit, -1);
    EXPECT_EQ(clips[2].ClipIdDigit, 6) << "kept when asked";
    std::filesystem::remove_all(m_card.Folder().Path("CONTENTS/CLIP"));
    EXPECT_THAT(ScannedNames(), IsEmpty()) << "a card without clips";
    EXPECT_THAT(Remarks(), IsEmpty());
}

TEST_F(CardScanTest, OneRecordServesAllAndCarriesOnlyTheUnreadDate) {
    m_card.AddClip("0001AA");
    m_card.AddClip("0001AB");
    const std::vector<std::string> order = ScannedNames();
    m_card.AddClip(order[0], {{kStart, "2005-02-01T06:00:00+08:00"},
                              {"EssenceList/Video/Codec", "AVC-LongG422"},
                              {"EssenceList/Video/TimecodeType", "NonDrop"},
                              {"Relation/Connection/Top/ClipName", "TOP"},
                              {"ClipMetadata/MemoList/Memo/Text", "memo"},
                              {"ClipMetadata/Proxy/ProxyElementList/+ProxyAudio", ""}});
    m_card.AddClip(order[1], {{kStart, "2005-02-01"}});
    const CArray<_tag_P2Clip> clips = Scan();
    ASSERT_EQ(clips.GetSize(), 2);
    EXPECT_EQ(ClipShow(clips[1], m_card.Contents())
                  .Joined("ShootStartTime StartDate CodecName TopClipName Memos DropFrame "
                          "StartTimecode ProxyAudioChannels EssenceMask"),
              "38384.25000|2005-02-01||||||-1|1");
}

TEST_F(CardScanTest, FindsNamesInLowerCaseAndOfAnyBytes) {
    const test::TempFolder& folder = m_card.Folder();
    std::filesystem::remove_all(folder.Path("CONTENTS"));
    folder.Write("contents/clip/0001ab.xml", test::ClipXml({{"ClipName", "0001AB"}}));
    folder.Write("contents/icon/0001ab.bmp");
    folder.Write("contents/Proxy/0001aB.Mp4");
    const ClipShow lower(Scan()[0], m_card.Contents());
    EXPECT_EQ(lower.Joined("XmlPath IconPath ProxyPath"),
              "CLIP\\0001ab.XML|ICON\\0001ab.BMP|PROXY\\0001ab.MP4");
    std::filesystem::remove_all(folder.Path("contents"));
    m_card.AddFile("CLIP/\xFF\xC3.XML", test::ClipXml({}));
    m_card.AddFile("ICON/\xFF\xC3.BMP");
    const CArray<_tag_P2Clip> clips = Scan();
    ASSERT_EQ(clips.GetSize(), 1);
    EXPECT_EQ(PosixPath(clips[0].XmlPath), folder.Path("CONTENTS/CLIP/\xFF\xC3.XML"));
    EXPECT_FALSE(clips[0].IconPath.IsEmpty());
    _tag_P2Clip clip;
    EXPECT_EQ(m_parser.LoadClipInfo(m_card.Root(), clips[0].ClipName, clip), 0);
}

TEST_F(CardScanTest, ASlowMediumIsReadAheadByAsManyThreadsAsThereAreWithTheSameOutcome) {
    const auto outcome = [&] {
        std::vector<std::string> all;
        for (const _tag_P2Clip& clip : Scan()) {
            all.push_back(ClipShow(clip, m_card.Contents()).Joined("ClipName Duration"));
        }
        const std::vector<std::string> remarks = Remarks();
        all.insert(all.end(), remarks.begin(), remarks.end());
        CArray<tag_P2EDL> edls;
        EXPECT_EQ(m_parser.LoadEdl(m_card.Root(), edls), 0);
        for (const tag_P2EDL& edl : edls) {
            all.push_back(platform::Utf8FromText(edl.Name.View()));
            EXPECT_EQ(all.back(), "P0" + std::to_string(edl.Duration)) << "each its own content";
        }
        return all;
    };
    for (int i = 0; i < 160; ++i) {
        m_card.AddClip(std::to_string(7919 * i % 10007)); // neither ascending nor descending
    }
    for (int i = 10; i < 30; ++i) {
        const std::string number = std::to_string(i);
        m_card.Folder().Write("EDITLIST/P0" + number + ".XML",
                              "<P2Main xmlns='EditMetadata'><EditContent><Duration>" + number +
                                  "</Duration></EditContent></P2Main>");
    }
    const std::string large(300'000, ' '); // beyond what is read ahead
    for (int i = 0; i < 5; ++i) {
        const std::string number = std::to_string(i);
        m_card.AddFile("CLIP/broken" + number + ".XML", "<P2Main>" + number);
        m_card.AddClip("large" + number, {{"Duration", number}, {"Filler", large}});
        m_card.Folder().MakeFolder("CONTENTS/CLIP/folder" + number + ".XML");
    }
    const std::vector<std::string> plain = outcome();
    ASSERT_EQ(plain.size(), 165U + 10U + 20U);

    FaultyFileSystem slow;
    std::mutex lock;
    std::set<std::thread::id> readers;
    int reads = 0;
    const auto count = [&](Operation operation, const std::string&) {
        const std::lock_guard guard(lock);
        if (operation == Operation::Read) {
            readers.insert(std::this_thread::get_id());
            const bool isQuick = ++reads % 120 > 40; // the threads end on the way, and start again
            slow.SetDelay(operation, std::chrono::microseconds(isQuick ? 0 : 500));
        }
    };
    const platform::ScopedFileSystem scope(slow);
    for (const int threads : {0, 1, 3, 4, 5, 12}) { // each of both scans asks for four
        readers.clear();
        reads = 0;
        slow.SetHook(count);
        const platform::ScopedThreadLimit limit(threads);
        EXPECT_EQ(outcome(), plain) << threads;
        EXPECT_EQ(readers.size() > 1, threads > 0) << threads;
    }
    slow.SetHook({});
    slow.SetDelay(Operation::Read, std::chrono::microseconds(500));
    slow.Fail({platform::IoError::Other, Operation::Read, "EDITLIST", 10, 1});
    EXPECT_EQ(outcome(), plain) << "what there is too little of for several is enough for one";
    readers.clear();
    slow.SetHook([&](Operation operation, const std::string& path) {
        count(operation, path);
        slow.SetDelay(std::chrono::microseconds(0));
        const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(50);
        while (std::chrono::steady_clock::now() < end) {
        }
    });
    EXPECT_EQ(outcome(), plain);
    EXPECT_EQ(readers.size(), 1U) << "a busy processor is no slow medium";
}

} // namespace
} // namespace nqp2::clips
