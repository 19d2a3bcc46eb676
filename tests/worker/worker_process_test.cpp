// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/Channel.h"
#include "NQP2ParserU/NQP2BaseClipInfo.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/R8P2SysInterface.h"
#include "NQP2ParserU/R8P2TransInfo.h"
#include "NQP2ParserU/RecordedClips.h"
#include "tests/channel/channel_test.h"
#include "tests/support/child_process.h"
#include "tests/support/print_text.h"
#include "tests/support/tracing.h"
#include "tests/worker/essence_maker.h"
#include "tests/worker/transfer_fixture.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace nqp2::worker {
namespace {

using testing::HasSubstr;

/// What the progress callback heard and shall say.
struct Heard {
    std::atomic<std::uint32_t> last{0};
    std::atomic<std::uint32_t> total{0};
    std::atomic<int> calls{0};
    std::atomic<std::uint32_t> abortAt{0xFFFFFFFF};
};

void Hear(std::uint32_t position, std::uint32_t total, std::int32_t& abort, void* context) {
    auto& heard = *static_cast<Heard*>(context);
    heard.last = position;
    heard.total = total;
    ++heard.calls;
    abort = position >= heard.abortAt ? 1 : 0;
}

/// Parsers of this process and the worker program itself.
class WorkerProcessTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        s_folder = new test::TempFolder;
        chmod(s_folder->Path().c_str(), 0700);
        ASSERT_TRUE(StartWorker());
        const SystemInterface own = HostInterface();
        R8P2Parser_SetSysInterface(own.systemObject, own.table);
    }
    static void TearDownTestSuite() {
        R8XDCAMParser_ResetSysInterface();
        LeaveWorker();
        EXPECT_FALSE(std::filesystem::exists(Socket())) << "a clean exit removes the socket";
        delete s_folder;
    }
    static WorkerStatus StartWorker() {
        return UseWorker({.program = NQP2_WORKER_PROGRAM, .arguments = {}, .socket = Socket()});
    }
    static std::string Socket() { return s_folder->Path("s"); }

    WorkerProcessTest() {
        m_parser.Init();
        m_parser.SetImpCallBack(Hear, &m_heard);
        AddWholeClip(m_card, "0001AB");
        m_card.AddFile("VIDEO/0001AB.MXF", Essence(5'000'000, 1));
    }
    ~WorkerProcessTest() override { m_parser.Release(); }

    stu_R8P2TransInfo Request(const CString& name = L"0001AB") {
        stu_R8P2TransInfo info;
        info.text1 = m_card.Root();
        info.text2 = name;
        info.text3 = InterfaceRoot(m_to.Path());
        return info;
    }
    std::string LastError() { return platform::Utf8FromText(m_parser.GetLastError().View()); }

    static inline test::TempFolder* s_folder = nullptr;
    Heard m_heard;
    test::CardBuilder m_card;
    test::TempFolder m_to;
    CNQP2Parser m_parser;
};

TEST_F(WorkerProcessTest, ImportsWithProgress) {
    stu_R8P2TransInfo info = Request();
    ASSERT_EQ(m_parser.ImportFile(info), 0) << LastError();
    EXPECT_EQ(FilesBelow(m_to.Path()), FilesBelow(m_card.Folder().Path()));
    EXPECT_EQ(info.value1, kFilesOfAClip);
    EXPECT_EQ(info.size3, 5'000'000U);
    EXPECT_EQ(info.size1, info.size3 + info.size4 + info.size5 + info.size6);
    EXPECT_EQ(m_heard.last, (info.size1 + 1023) / 1024);
    EXPECT_EQ(m_heard.total, m_heard.last);
    EXPECT_GE(m_heard.calls, 2);
    std::uint32_t done = 0;
    std::uint32_t total = 0;
    m_parser.GetUploadOffset(done, total);
    EXPECT_EQ(done, m_heard.total);
    EXPECT_EQ(total, m_heard.total);
}

TEST_F(WorkerProcessTest, TheHostCancelsAtAnyPosition) {
    for (const std::uint32_t position : {0U, 1000U, 4000U}) {
        m_heard.abortAt = position;
        stu_R8P2TransInfo info = Request();
        EXPECT_EQ(m_parser.ImportFile(info), 1);
        EXPECT_EQ(LastError(), "Cancelled.");
        EXPECT_TRUE(FilesBelow(m_to.Path()).empty());
    }
    m_heard.abortAt = 0xFFFFFFFF;
    stu_R8P2TransInfo info = Request();
    EXPECT_EQ(m_parser.ImportFile(info), 0) << LastError();
}

/// What a static parser does when a child that the host forked exits, and what the child may do.
TEST_F(WorkerProcessTest, AForkedChildEndsNothingOfItsParents) {
    const SystemInterface own = HostInterface();
    EXPECT_EQ(test::RunInChild([&] {
                  alarm(20);
                  if (m_parser.SetWriteBlockSize(65536) == 1) {
                      return 1; // a request on the parent's channel
                  }
                  R8XDCAMParser_ResetSysInterface();
                  m_parser.Release();
                  R8P2Parser_SetSysInterface(own.systemObject, own.table);
                  m_parser.Init();
                  const bool isServed = m_parser.SetWriteBlockSize(65536) == 1;
                  m_parser.Release();
                  R8XDCAMParser_ResetSysInterface();
                  LeaveWorker();
                  return isServed ? 7 : 2;
              }),
              7);
    stu_R8P2TransInfo info = Request();
    EXPECT_EQ(m_parser.ImportFile(info), 0) << LastError();
    EXPECT_EQ(m_heard.last, (info.size1 + 1023) / 1024);
}

#ifndef NQP2_MEMORY_IS_INSTRUMENTED
/// Address space for more and more of a session: its memory, its first thread, its others.
TEST_F(WorkerProcessTest, ASessionForWhichThereIsNoRoomEndsAlone) {
    const pid_t worker = test::ChildNamed("nqp2-worker");
    std::ifstream file("/proc/" + std::to_string(worker) + "/statm");
    rlim_t pages = 0;
    file >> pages;
    const rlim_t size = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
    int served = 0;
    int refused = 0;
    for (rlim_t more = 0; more < 160; more += 5) {
        SCOPED_TRACE(more);
        const rlimit low{size + (more << 20U), RLIM_INFINITY};
        const rlimit none{RLIM_INFINITY, RLIM_INFINITY};
        ASSERT_EQ(prlimit(worker, RLIMIT_AS, &low, nullptr), 0);
        CNQP2Parser parser;
        parser.Init();
        const int answer = parser.SetWriteBlockSize(65536);
        ASSERT_EQ(prlimit(worker, RLIMIT_AS, &none, nullptr), 0);
        ++(answer == 1 ? served : refused);
        parser.Release();
        ASSERT_EQ(m_parser.SetWriteBlockSize(65536), 1) << "the others";
        ASSERT_EQ(test::ChildNamed("nqp2-worker"), worker);
    }
    EXPECT_TRUE(served > 0 && refused > 0) << served << " served, " << refused << " refused";
}

TEST_F(WorkerProcessTest, ARequestForWhichThereIsNoMemoryTellsSo) {
    ASSERT_EQ(m_parser.SetWriteBlockSize(64 << 20), 1);
    const rlimit low{1, RLIM_INFINITY};
    const rlimit none{RLIM_INFINITY, RLIM_INFINITY};
    const pid_t worker = test::ChildNamed("nqp2-worker");
    ASSERT_EQ(prlimit(worker, RLIMIT_AS, &low, nullptr), 0);
    stu_R8P2TransInfo info = Request();
    EXPECT_NE(m_parser.ImportFile(info), 0);
    ASSERT_EQ(prlimit(worker, RLIMIT_AS, &none, nullptr), 0);
    EXPECT_EQ(LastError(), "Out of memory.");
    EXPECT_TRUE(std::filesystem::is_empty(m_to.Path()));
}
#endif

TEST_F(WorkerProcessTest, ServesEveryFrontEnd) {
    const test::CardBuilder target;
    EXPECT_EQ(m_parser.SetSystemType(VS_5994I), 1);
    EXPECT_EQ(m_parser.SetWriteBlockSize(65536), 1);
    EXPECT_EQ(m_parser.SetWriteBlockSize(1), 0);
    EXPECT_THAT(LastError(), HasSubstr("Blocks of 1 bytes"));
    stu_R8P2TransInfo info;
    info.text1 = target.Root();
    info.text3 = m_card.Root();
    CStringArray names;
    names.Add(L"0001AB");
    EXPECT_EQ(m_parser.ExportFile(&info, names), 1) << LastError();
    EXPECT_EQ(FilesBelow(target.Folder().Path()), FilesBelow(m_card.Folder().Path()));
    std::string pixels(std::size_t{80} * 60 * 3, 'x');
    EXPECT_EQ(m_parser.CreateIconBmp(target.Root(), L"0001AB",
                                     reinterpret_cast<unsigned char*>(pixels.data()), {80, 60}),
              1);
    EXPECT_EQ(FilesBelow(target.Folder().Path()).at("CONTENTS/ICON/0001AB.BMP").size(), 14454U);
    NQP2BaseClipInfo base;
    EXPECT_EQ(m_parser.GetP2BaseClipInfo(target.Contents() + L"CLIP\\0001AB.XML", base), 1);
    EXPECT_EQ(base.clipText1, L"0001AB");
    m_parser.DeleteFileW(L"0001AB", target.Root());
    EXPECT_TRUE(FilesBelow(target.Folder().Path()).empty());
    CString serial;
    EXPECT_EQ(m_parser.GetP2SerialNumber(L"/proc:", serial), 1);
    EXPECT_THAT(LastError(), HasSubstr("no device"));
    m_parser.CloseAllFile();
}

TEST_F(WorkerProcessTest, RecordsAStream) {
    const test::CardBuilder card;
    CArray<stu_R8PRelationClipInfo> related;
    int numbers[8] = {};
    WAVEFORMATEX wave;
    wave.wFormatTag = 1;
    wave.nChannels = 2;
    wave.nSamplesPerSec = 48000;
    wave.wBitsPerSample = 16;
    EXPECT_EQ(m_parser.StartRTExport(0), 0) << "no parameters";
    ASSERT_EQ(m_parser.SetRTExportParam(CT_DV50_50I, {}, wave, numbers, card.Root(), L"", L"Live",
                                        0, related, 0, 0),
              1)
        << LastError();
    EXPECT_EQ(m_parser.SetRTExportExtraParam(1), 1);
    ASSERT_EQ(m_parser.StartRTExport(4), 1) << LastError();
    EXPECT_EQ(m_parser.StartRTExport(4), 0) << "one at a time";
    for (std::string& unit : EncodePictures(kDv50Pal, 4)) {
        unsigned char* buffer = nullptr;
        ASSERT_EQ(m_parser.AddRTExportAVDataForBuf(static_cast<int>(unit.size()), buffer), 1);
        std::copy(unit.begin(), unit.end(), buffer);
        std::string sound(std::size_t{1920} * 4, 's');
        ASSERT_EQ(m_parser.AddRTExportAVData(2, buffer, static_cast<std::uint32_t>(unit.size()),
                                             reinterpret_cast<unsigned char*>(sound.data()),
                                             static_cast<std::uint32_t>(sound.size()), 0),
                  1)
            << LastError();
    }
    EXPECT_EQ(m_parser.AddRTExportAVData(3, nullptr, 0, nullptr, 0, 0), 0);
    EXPECT_TRUE(FilesBelow(card.Folder().Path("CONTENTS/CLIP")).empty());
    ASSERT_EQ(m_parser.StopRTExport(0, 0), 1) << LastError();
    const CStringArray names = RecordedClips(m_parser);
    ASSERT_EQ(names.GetSize(), 1);
    EXPECT_EQ(names[0], L"0001AA");
    EXPECT_EQ(FilesBelow(card.Folder().Path()).count("CONTENTS/CLIP/0001AA.XML"), 1U);
    EXPECT_EQ(m_parser.StopRTExport(0, 0), 0);
}

/// The recording of a host that has gone is completed, beside what others want.
TEST_F(WorkerProcessTest, ASlowCardHoldsUpNoNewcomer) {
    if (!test::CanTrace()) {
        GTEST_SKIP() << "strace is missing or may not trace";
    }
    const test::CardBuilder card;
    CNQP2Parser leaving;
    leaving.Init();
    CArray<stu_R8PRelationClipInfo> related;
    int numbers[8] = {};
    std::string unit = EncodePictures(kDv50Pal, 1).front();
    ASSERT_EQ(leaving.SetRTExportParam(CT_DV50_50I, {}, {}, numbers, card.Root(), L"", L"", 0,
                                       related, 0, 0),
              1);
    ASSERT_EQ(leaving.StartRTExport(1), 1) << LastError();
    ASSERT_EQ(leaving.AddRTExportAVData(2, reinterpret_cast<unsigned char*>(unit.data()),
                                        static_cast<std::uint32_t>(unit.size()), nullptr, 0, 0),
              1);
    {
        const test::Tracer slow(test::ChildNamed("nqp2-worker"),
                                {"-o", "/dev/null", "-e", "inject=fsync:delay_enter=2000000"});
        leaving.Release();
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        EXPECT_LT(test::TimeOf([] {
                      CNQP2Parser newcomer;
                      newcomer.Init();
                      EXPECT_EQ(newcomer.SetWriteBlockSize(65536), 1);
                      newcomer.Release();
                  }),
                  test::kSlack);
        EXPECT_TRUE(FilesBelow(card.Folder().Path("CONTENTS/CLIP")).empty()) << "not slow at all";
    }
    EXPECT_TRUE(test::Eventually(
        [&] { return FilesBelow(card.Folder().Path()).count("CONTENTS/CLIP/0001AA.XML") == 1; }));
}

TEST_F(WorkerProcessTest, ServesParsersSideBySide) {
    std::vector<std::thread> hosts;
    std::atomic<int> imported{0};
    for (int i = 0; i < 4; ++i) {
        hosts.emplace_back([&, i] {
            CNQP2Parser parser;
            parser.Init();
            stu_R8P2TransInfo info = Request();
            info.text3 = InterfaceRoot(m_to.Path("host" + std::to_string(i)));
            imported += parser.ImportFile(info) == 0 ? 1 : 0;
            parser.Release();
        });
    }
    for (std::thread& host : hosts) {
        host.join();
    }
    EXPECT_EQ(imported, 4);
    EXPECT_EQ(FilesBelow(m_to.Path()).size(), 4 * kFilesOfAClip);
}

TEST_F(WorkerProcessTest, ThousandsOfParsersLeaveNothingBehind) {
    const auto useParsers = [](int count) {
        for (int i = 0; i < count && !HasFailure(); ++i) {
            CNQP2Parser parser;
            EXPECT_EQ(parser.Init(), 0);
            EXPECT_EQ(parser.SetSystemType(VS_50I), 1);
            parser.Release();
        }
    };
    const std::string worker = std::to_string(test::ChildNamed("nqp2-worker"));
    useParsers(1);
    const test::Holdings own = test::Settled();
    const test::Holdings others = test::Settled(worker);
    // Side by side, as each close waits some twenty milliseconds for its threads.
    constexpr int kHosts = 12;
    std::vector<std::thread> hosts;
    for (int i = 0; i < kHosts; ++i) {
        hosts.emplace_back(useParsers, 3000 / kHosts);
    }
    for (std::thread& host : hosts) {
        host.join();
    }
    EXPECT_TRUE(test::IsBackTo(own));
    EXPECT_TRUE(test::IsBackTo(others, 0, worker));
}

/// Requests wait without end, as the channel was told to; what needs no answer does not.
TEST_F(WorkerProcessTest, AStoppedWorkerHoldsUpNoClose) {
    const pid_t worker = test::ChildNamed("nqp2-worker");
    kill(worker, SIGSTOP);
    ASSERT_EQ(waitpid(worker, nullptr, WUNTRACED), worker);
    EXPECT_LT(test::TimeOf([&] { m_parser.Release(); }), test::kSlack);
    // One that stopped for good is no worker: five seconds are what a channel waits for it.
    EXPECT_LT(test::TimeOf([] {
                  CNQP2Parser another;
                  EXPECT_EQ(another.Init(), 0);
                  another.Release();
              }),
              15000);
    kill(worker, SIGCONT);
    m_parser.Init();
    EXPECT_EQ(m_parser.SetSystemType(VS_50I), 1);
}

TEST_F(WorkerProcessTest, DescribesCameraFilesToTheScan) {
    const test::TempFolder folder;
    folder.MakeFolder("card/SONY/DVF/100DVF");
    folder.MakeFolder("card/PANA_GRP/001RBQAM");
    ASSERT_TRUE(WriteMovie(folder.Path("card/SONY/DVF/100DVF/DV01.AVI"), "avi", kDv25Pal, 10));
    ASSERT_TRUE(WriteMovie(folder.Path("card/PANA_GRP/001RBQAM/P1.MOV"), "mov", kDv50Pal, 7));
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.Path());
    CArray<_tag_P2Clip> clips;
    EXPECT_EQ(m_parser.LoadAVCHDClip(L"./card", clips), 0);
    std::filesystem::current_path(before);
    ASSERT_EQ(clips.GetSize(), 2) << LastError();
    EXPECT_EQ(clips[0].ClipName, L"DV01");
    EXPECT_EQ(clips[0].CodecName, L"DV25_420");
    EXPECT_EQ(clips[0].Duration, 10);
    EXPECT_EQ(clips[0].ActiveLine, 576);
    EXPECT_EQ(clips[0].EssenceMask, 7U);
    EXPECT_EQ(PosixPath(clips[0].VideoPath), folder.Path("./card/SONY/DVF/100DVF/DV01.AVI"))
        << "the worker has a current folder of its own";
    EXPECT_EQ(clips[1].CodecName, L"DV50_422");
    EXPECT_EQ(clips[1].FrameRate, L"50i");
}

} // namespace
} // namespace nqp2::worker
