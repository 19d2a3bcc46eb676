// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// The worker, and the library's process, killed at the system calls of a request; and calls of the
// worker that fail. NQP2_KILLS=1000 takes every call of every request; a few of each are the default.

#include "channel/peer.h"
#include "NQP2ParserU/Channel.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/R8P2SysInterface.h"
#include "NQP2ParserU/R8P2TransInfo.h"
#include "tests/channel/channel_test.h"
#include "tests/support/child_process.h"
#include "tests/support/tracing.h"
#include "tests/worker/essence_maker.h"
#include "tests/worker/transfer_fixture.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <poll.h>
#include <set>
#include <sys/prctl.h>

namespace nqp2::worker {
namespace {

using namespace std::chrono_literals;

using Tree = std::map<std::string, std::string>;
using test::SystemCall;

std::size_t KillsEach() {
    const char* const asked = std::getenv("NQP2_KILLS");
    return asked != nullptr ? static_cast<std::size_t>(std::atoi(asked)) : 4;
}

/// Whether a call reads or writes files, and no channel.
bool IsOfTheMedium(const std::string& call) {
    constexpr const char* kCalls[] = {"fsync",     "ftruncate",  "getdents64", "mkdirat",
                                      "openat",    "pread64",    "pwrite64",   "read",
                                      "renameat2", "newfstatat", "fstat",      "unlinkat",
                                      "statx",     "fstatfs",    "utimensat"};
    return std::find(std::begin(kCalls), std::end(kCalls), call) != std::end(kCalls);
}

bool IsHidden(const std::string& name) {
    return std::filesystem::path(name).filename().string().starts_with(".nqp2-");
}

/// The folders of one request and the worker that serves it.
struct Stage {
    Stage() {
        AddWholeClip(card, "0001AB");
        R8P2Parser_SetSysInterface(HostInterface().systemObject, HostInterface().table);
    }
    ~Stage() {
        R8XDCAMParser_ResetSysInterface();
        R8P2Parser_SetSysInterface(nullptr, nullptr);
        LeaveWorker();
    }

    pid_t StartWorker() const {
        EXPECT_TRUE(UseWorker({.program = NQP2_WORKER_PROGRAM, .socket = socket.Socket()}));
        return test::ChildNamed("nqp2-worker");
    }
    [[nodiscard]] stu_R8P2TransInfo Transfer(const CString& cardRoot, const CString& folder) const {
        stu_R8P2TransInfo info;
        info.text1 = cardRoot;
        info.text2 = L"0001AB";
        info.text3 = folder;
        return info;
    }

    test::SocketFolder socket;
    test::CardBuilder card;
    test::TempFolder to;
};

/// A request that changes `to`, what stands there before, and how its outcome is compared.
struct Scenario {
    const char* name;
    void (*prepare)(const Stage&);
    bool (*request)(const Stage&, CNQP2Parser&);
    bool differs =
        false; ///< from run to run, by dates and identifiers: names and sizes are compared
};

void Nothing(const Stage&) {}

/// A second copy of the clip, to be worked on.
void CopyClip(const Stage& stage) {
    std::filesystem::copy(stage.card.Folder().Path(), stage.to.Path(),
                          std::filesystem::copy_options::recursive);
}

void MakeCard(const Stage& stage) {
    stage.to.MakeFolder("CONTENTS/CLIP");
}

bool Import(const Stage& stage, CNQP2Parser& parser) {
    auto info = stage.Transfer(stage.card.Root(), InterfaceRoot(stage.to.Path()));
    return parser.ImportFile(info) == 0;
}

bool Export(const Stage& stage, CNQP2Parser& parser) {
    auto info = stage.Transfer(InterfaceRoot(stage.to.Path()), stage.card.Root());
    CStringArray names;
    names.Add(L"0001AB");
    return parser.ExportFile(&info, names) == 1;
}

bool Delete(const Stage& stage, CNQP2Parser& parser) {
    parser.DeleteFileW(L"0001AB", InterfaceRoot(stage.to.Path()));
    return true;
}

bool MakeIcon(const Stage& stage, CNQP2Parser& parser) {
    std::string pixels(std::size_t{80} * 60 * 3, 'x');
    return parser.CreateIconBmp(InterfaceRoot(stage.to.Path()), L"0001AB",
                                reinterpret_cast<unsigned char*>(pixels.data()), {80, 60}) == 1;
}

/// Under the next free name: what a killed recording has named keeps its own.
bool Record(const Stage& stage, CNQP2Parser& parser) {
    static std::vector<std::string> units = EncodePictures(kDv25Pal, 2);
    CArray<stu_R8PRelationClipInfo> related;
    int numbers[8] = {};
    WAVEFORMATEX wave{1, 2, 48000, 192000, 4, 16, 0};
    bool done =
        parser.SetRTExportParam(CT_DV25_50I, {}, wave, numbers, InterfaceRoot(stage.to.Path()), L"",
                                L"", 0, related, 0, 0) == 1 &&
        parser.StartRTExport(2) == 1;
    for (std::string& unit : units) {
        std::string sound(std::size_t{1920} * 4, 's');
        done = done && parser.AddRTExportAVData(2, reinterpret_cast<unsigned char*>(unit.data()),
                                                static_cast<std::uint32_t>(unit.size()),
                                                reinterpret_cast<unsigned char*>(sound.data()),
                                                static_cast<std::uint32_t>(sound.size()), 0) == 1;
    }
    return done && parser.StopRTExport(0, 0) == 1;
}

const Scenario kScenarios[] = {
    {"import", Nothing, Import},  {"export", Nothing, Export},        {"delete", CopyClip, Delete},
    {"icon", CopyClip, MakeIcon}, {"record", MakeCard, Record, true},
};

/// A library process of its own, which begins its work when told to.
class HostProcess {
public:
    explicit HostProcess(const std::function<void()>& work) {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        const platform::Descriptor start(ends[0]);
        m_start = platform::Descriptor(ends[1]);
        m_process = fork();
        if (m_process == 0) {
            m_start.Close();
            char word = 0;
            if (read(start.Get(), &word, 1) == 1) {
                work();
            }
            _exit(0);
        }
    }
    HostProcess(const HostProcess&) = delete;
    HostProcess& operator=(const HostProcess&) = delete;
    ~HostProcess() {
        if (!m_ended && m_process > 0) {
            kill(m_process, SIGKILL);
            static_cast<void>(End());
        }
    }

    [[nodiscard]] pid_t Process() const { return m_process; }
    void Begin() const { EXPECT_EQ(write(m_start.Get(), "b", 1), 1); }
    /// Waits for the end; whether it was killed.
    bool End() {
        if (!m_ended) {
            m_ended = waitpid(m_process, &m_status, 0) == m_process;
        }
        return m_ended && WIFSIGNALED(m_status);
    }

private:
    platform::Descriptor m_start;
    pid_t m_process = -1;
    bool m_ended = false;
    int m_status = 0;
};

class KillTest : public testing::TestWithParam<Scenario> {
protected:
    void SetUp() override {
        if (!test::CanTrace()) {
            GTEST_SKIP() << "strace is missing or may not trace";
        }
        m_source = FilesBelow(m_stage.card.Folder().Path());
    }

    void Prepare() {
        for (const auto& entry : std::filesystem::directory_iterator(m_stage.to.Path())) {
            std::filesystem::remove_all(entry.path());
        }
        GetParam().prepare(m_stage);
    }
    bool Request(CNQP2Parser& parser) { return GetParam().request(m_stage, parser); }

    /// Every call that the worker makes for the request, which succeeds.
    std::vector<SystemCall> CallsOfTheRequest() {
        const std::string trace = m_stage.socket.Path("trace");
        m_stage.StartWorker();
        Prepare();
        m_prepared = FilesBelow(m_stage.to.Path());
        CNQP2Parser parser;
        EXPECT_EQ(parser.Init(), 0);
        {
            const test::Tracer tracer(test::ChildNamed("nqp2-worker"), {"-o", trace});
            EXPECT_TRUE(Request(parser));
        }
        parser.Release();
        LeaveWorker();
        m_finished = FilesBelow(m_stage.to.Path());
        return TakeCalls(trace);
    }
    static std::vector<SystemCall> TakeCalls(const std::string& trace) {
        std::vector<SystemCall> calls = test::CallsIn(trace);
        std::filesystem::remove(trace);
        return calls;
    }

    /// Whole files only, as they were before or as the request leaves them, and the metadata only
    /// beside all others.
    void ExpectNoHalfThing() {
        std::map<std::string, std::size_t> clips; // by name, with the number of their files
        std::set<std::string> shown;
        for (const auto& [name, content] : FilesBelow(m_stage.to.Path())) {
            if (IsHidden(name)) {
                continue;
            }
            EXPECT_TRUE(IsOf(m_prepared, name, content) || IsOf(m_finished, name, content)) << name;
            ++clips[ClipOf(name)];
            if (name.starts_with("CONTENTS/CLIP/")) {
                shown.insert(ClipOf(name));
            }
        }
        for (const std::string& clip : shown) {
            EXPECT_EQ(clips[clip], std::max(m_prepared.size(), m_finished.size())) << clip;
        }
        EXPECT_TRUE(FilesBelow(m_stage.card.Folder().Path()) == m_source) << "the source";
    }
    static std::string ClipOf(const std::string& path) {
        return std::filesystem::path(path).filename().string().substr(0, 6);
    }
    /// Whether a file is one of the tree, which knows recordings by the first free name, and whole
    /// ones: a host that ends leaves what came before.
    static bool IsOf(const Tree& tree, std::string name, const std::string& content) {
        if (GetParam().differs) {
            name.replace(name.find(ClipOf(name)), 6, "0001AA");
        }
        const auto found = tree.find(name);
        return found != tree.end() && (GetParam().differs ? content.size() <= found->second.size()
                                                          : content == found->second);
    }

    /// Another parser does the same once more, and what the killed left hidden is gone.
    void ExpectTheNextMakesGood() {
        CNQP2Parser parser;
        EXPECT_EQ(parser.Init(), 0);
        Request(parser); // of a clip that is deleted already nothing is left to delete
        parser.Release();
        const Tree found = FilesBelow(m_stage.to.Path());
        if (!GetParam().differs) {
            EXPECT_TRUE(found == m_finished);
            return;
        }
        EXPECT_TRUE(std::any_of(found.begin(), found.end(), [](const auto& file) {
            return file.first.starts_with("CONTENTS/CLIP/");
        }));
        EXPECT_TRUE(std::none_of(found.begin(), found.end(),
                                 [](const auto& file) { return IsHidden(file.first); }));
    }

    /// False when the worker lived on: it made fewer calls this time.
    bool KillAt(const SystemCall& call) {
        const pid_t worker = m_stage.StartWorker();
        const platform::Descriptor life = channel::OpenProcess(worker);
        CNQP2Parser parser;
        EXPECT_EQ(parser.Init(), 0);
        const test::Tracer tracer(worker, {"-o", "/dev/null", "-e", Inject(call, "signal=KILL")});
        auto answer = std::async(std::launch::async, [&] { return Request(parser); });
        while (!HasEnded(life, 10) && answer.wait_for(0s) != std::future_status::ready) {
        }
        // Dead or not, the caller does not wait any longer.
        EXPECT_EQ(answer.wait_for(3s), std::future_status::ready); // one, but for busy machines
        static_cast<void>(answer.get());
        parser.Release();
        return HasEnded(life, 0);
    }

    static bool HasEnded(const platform::Descriptor& process, int milliseconds) {
        pollfd watched{process.Get(), POLLIN, 0};
        return poll(&watched, 1, milliseconds) > 0;
    }

    /// What a library process does from its beginning to its end.
    void BeHost(const WorkerSettings& worker) {
        static_cast<void>(UseWorker(worker));
        CNQP2Parser parser;
        parser.Init();
        Request(parser);
        parser.Release();
        LeaveWorker();
    }
    /// Every call that such a process makes.
    std::vector<SystemCall> CallsOfAHost(const WorkerSettings& worker, test::Traced traced) {
        const std::string trace = m_stage.socket.Path("trace");
        Prepare();
        HostProcess host([&] { BeHost(worker); });
        const test::Tracer tracer(host.Process(), {"-o", trace}, traced);
        host.Begin();
        EXPECT_FALSE(host.End());
        return TakeCalls(trace);
    }
    /// False when it lived on.
    bool KillHostAt(const SystemCall& call, const WorkerSettings& worker, test::Traced traced) {
        Prepare();
        HostProcess host([&] { BeHost(worker); });
        const test::Tracer tracer(host.Process(),
                                  {"-o", "/dev/null", "-e", Inject(call, "signal=KILL")}, traced);
        host.Begin();
        return host.End();
    }

    Stage m_stage;
    Tree m_source;
    Tree m_prepared;
    Tree m_finished;
};

TEST_P(KillTest, AWorkerKilledAtAnyCallLeavesNothingHalf) {
    const std::vector<SystemCall> calls = CallsOfTheRequest();
    ASSERT_GT(calls.size(), 20U);
    const test::Holdings before = test::Settled();
    int kills = 0;
    for (const SystemCall& call : test::SomeOf(calls, KillsEach())) {
        SCOPED_TRACE(call.name + ' ' + std::to_string(call.number));
        Prepare();
        kills += KillAt(call) ? 1 : 0;
        ExpectNoHalfThing();
        m_stage.StartWorker();
        ExpectTheNextMakesGood();
        LeaveWorker();
    }
    EXPECT_GT(kills, 1);
    EXPECT_TRUE(test::IsBackTo(before));
}

/// A medium that fails now and then: the worker lives on and clears up itself.
TEST_P(KillTest, ACallThatFailsLeavesNothingHalf) {
    std::vector<SystemCall> calls = CallsOfTheRequest();
    std::erase_if(calls, [](const SystemCall& call) { return !IsOfTheMedium(call.name); });
    const auto isFlush = [](const SystemCall& call) { return call.name == "fsync"; };
    const auto lastFlush = std::find_if(calls.rbegin(), calls.rend(), isFlush);
    std::vector<SystemCall> failing = test::SomeOf(calls, KillsEach());
    if (lastFlush != calls.rend()) {
        failing.push_back(*lastFlush); // of the folder, when the last name has been given
    }
    for (const SystemCall& call : failing) {
        SCOPED_TRACE(call.name + ' ' + std::to_string(call.number));
        Prepare();
        m_stage.StartWorker();
        CNQP2Parser parser;
        EXPECT_EQ(parser.Init(), 0);
        {
            const test::Tracer tracer(test::ChildNamed("nqp2-worker"),
                                      {"-o", "/dev/null", "-e", Inject(call, "error=EIO")});
            Request(parser);
        }
        parser.Release();
        ExpectNoHalfThing();
        ExpectTheNextMakesGood();
        LeaveWorker();
    }
}

/// The library's process is killed instead: the worker drops what it was asked for and lives on.
TEST_P(KillTest, AHostKilledAtAnyCallEndsItsRequestAndNotTheWorker) {
    CallsOfTheRequest();
    const WorkerSettings found{.socket = m_stage.socket.Socket()};
    const std::string worker = std::to_string(m_stage.StartWorker());
    const std::vector<SystemCall> calls = CallsOfAHost(found, test::Traced::All);
    ASSERT_GT(calls.size(), 20U);
    const test::Holdings before = test::Settled(worker);
    int kills = 0;
    for (const SystemCall& call : test::SomeOf(calls, KillsEach())) {
        SCOPED_TRACE(call.name + ' ' + std::to_string(call.number));
        kills += KillHostAt(call, found, test::Traced::All) ? 1 : 0;
        EXPECT_TRUE(test::IsBackTo(before, 0, worker));
        const Tree left = FilesBelow(m_stage.to.Path());
        EXPECT_TRUE(std::none_of(left.begin(), left.end(),
                                 [](const auto& file) { return IsHidden(file.first); }));
        ExpectNoHalfThing();
        ExpectTheNextMakesGood();
    }
    EXPECT_GT(kills, 1);
}

/// A worker that is bound to its host goes with it, whatever the host was about to do.
TEST_P(KillTest, AWorkerBoundToItsHostEndsWithIt) {
    CallsOfTheRequest();
    const WorkerSettings own{.program = NQP2_WORKER_PROGRAM, .socket = m_stage.socket.Socket()};
    prctl(PR_SET_CHILD_SUBREAPER, 1); // orphans come to this process, which sees them end
    const std::vector<SystemCall> calls = CallsOfAHost(own, test::Traced::FirstThread);
    ASSERT_GT(calls.size(), 20U);
    for (const SystemCall& call : test::SomeOf(calls, KillsEach())) {
        SCOPED_TRACE(call.name + ' ' + std::to_string(call.number));
        KillHostAt(call, own, test::Traced::FirstThread);
        // One that is on the way to be a worker does not have its name yet.
        EXPECT_TRUE(
            test::Eventually([] { return waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD; }));
        EXPECT_EQ(test::CountEntries(m_stage.socket.Path()), 0U) << "its socket";
        ExpectNoHalfThing();
    }
    prctl(PR_SET_CHILD_SUBREAPER, 0);
}

/// Asked to end in the middle of a request, by a signal or by its host: it ends in order, which an
/// access to memory that is gone is not, and clears up.
TEST_P(KillTest, AWorkerThatIsAskedToEndAtAnyMomentEndsInOrder) {
    m_stage.card.AddFile("VIDEO/0001AB.MXF", Essence(8'000'000, 1));
    const std::size_t moments = 3 * KillsEach();
    std::chrono::microseconds duration{0};
    for (std::size_t i = 0; i <= moments; ++i) {
        SCOPED_TRACE(i);
        Prepare();
        const pid_t worker = m_stage.StartWorker();
        CNQP2Parser parser;
        EXPECT_EQ(parser.Init(), 0);
        const auto start = std::chrono::steady_clock::now();
        auto answer = std::async(std::launch::async, [&] { return Request(parser); });
        if (i == 0) { // how long it takes undisturbed
            answer.wait();
            duration = std::chrono::duration_cast<std::chrono::microseconds>(
                std::chrono::steady_clock::now() - start);
        }
        std::this_thread::sleep_for(duration * i / moments);
        std::future<void> leaving;
        if (i % 2 == 0) {
            kill(worker, SIGTERM);
        } else {
            leaving = std::async(std::launch::async, [] { LeaveWorker(); });
        }
        siginfo_t ended{};
        EXPECT_LT(test::TimeOf([&] {
                      while (waitid(P_PID, static_cast<id_t>(worker), &ended, WEXITED | WNOWAIT) !=
                                 0 &&
                             errno == EINTR) {
                      }
                  }),
                  2000);
        EXPECT_TRUE(ended.si_pid == 0 || (ended.si_code == CLD_EXITED && ended.si_status == 0))
            << ended.si_code << ' ' << ended.si_status;
        EXPECT_EQ(answer.wait_for(3s), std::future_status::ready);
        parser.Release();
        const Tree left = FilesBelow(m_stage.to.Path());
        EXPECT_TRUE(std::none_of(left.begin(), left.end(),
                                 [](const auto& file) { return IsHidden(file.first); }));
        LeaveWorker();
    }
}

INSTANTIATE_TEST_SUITE_P(Requests, KillTest, testing::ValuesIn(kScenarios),
                         [](const auto& each) { return std::string(each.param.name); });

} // namespace
} // namespace nqp2::worker
