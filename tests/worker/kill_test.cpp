// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// The worker, and the library's process, killed at the system calls of a request; and calls of the
// worker that fail. A few calls of each request are taken; NQP2_KILLS=1000 takes all.

#include "NQP2ParserU/Rewrap.h"
#include "tests/support/tracing.h"
#include "tests/worker/essence_maker.h"
#include "tests/worker/worker_stage.h"
#include "worker/essence_file.h"

#include <csignal>
#include <cstdlib>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <set>
#include <sys/prctl.h>
#include <sys/syscall.h>

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
bool IsOfTheMedium(const SystemCall& call) {
    static const std::set<std::string> kCalls = {
        "fsync",   "ftruncate", "getdents64", "mkdirat",   "openat",
        "pread64", "pwrite64",  "read",       "renameat2", "newfstatat",
        "fstat",   "unlinkat",  "statx",      "fstatfs",   "utimensat"};
    return kCalls.contains(call.name);
}

bool IsHidden(const std::string& name) {
    return std::filesystem::path(name).filename().string().starts_with(".nqp2-");
}

/// A request that changes `to`, what exists there before, and how its outcome is compared.
struct Scenario {
    const char* name;
    bool hasClip; ///< a second copy of the clip, to be worked on
    bool (*request)(const WorkerStage&, OpenParser&);
    bool differs = false; ///< from run to run, by dates and identifiers: sizes are compared
};

bool Import(const WorkerStage& stage, OpenParser& parser) {
    return stage.Import(parser);
}

bool Export(const WorkerStage& stage, OpenParser& parser) {
    auto info = stage.Transfer(stage.To(), stage.card.Root());
    CStringArray names;
    names.Add(L"0001AB");
    return parser.ExportFile(&info, names) == 1;
}

bool Delete(const WorkerStage& stage, OpenParser& parser) {
    parser.DeleteFileW(L"0001AB", stage.To());
    return true;
}

bool MakeIcon(const WorkerStage& stage, OpenParser& parser) {
    std::string pixels(std::size_t{80} * 60 * 3, 'x');
    auto* const bytes = reinterpret_cast<unsigned char*>(pixels.data());
    return parser.CreateIconBmp(stage.To(), L"0001AB", bytes, {80, 60}) == 1;
}

/// Under the next free name: what a killed recording has named keeps its own.
bool Record(const WorkerStage& stage, OpenParser& parser) {
    static const std::vector<std::string> units = EncodePictures(kDv25Pal, 2);
    return parser.StartRecording(stage.To()) && parser.AddFrame(units[0]) &&
           parser.AddFrame(units[1]) && parser.StopRTExport(0, 0) == 1;
}

/// A camera's file that lies on none of the cards.
const std::string& PartOfARecording() {
    static const test::TempFolder folder;
    static const std::string path = [] {
        std::unique_ptr<platform::Folder> opened;
        EXPECT_TRUE(platform::Files().OpenFolder(folder.Path(), opened));
        VideoFormat format;
        format.width = kDv25Pal.width;
        format.height = kDv25Pal.height;
        format.interlaced = true;
        format.rate = {25, 1};
        format.timecode = "00:00:00:00";
        EssenceFile file(*opened, "part.MXF", format);
        for (const std::string& unit : EncodePictures(kDv25Pal, 2)) {
            file.Add(unit);
        }
        file.Finish(0);
        file.Commit();
        return folder.Path("part.MXF");
    }();
    return path;
}

bool MakePlayable(const WorkerStage& stage, OpenParser& parser) {
    RewrapRequest request;
    request.target = stage.To() + L"\\CONTENTS\\0001AB.mov";
    RewrapPart part;
    part.name = L"0001AB";
    part.video = InterfaceRoot(PartOfARecording());
    request.parts.Add(part);
    RewrapResult result;
    return nqp2::Rewrap(parser, request, result) == RewrapStatus::Written;
}

const Scenario kScenarios[] = {
    {"import", false, Import}, {"export", false, Export},       {"delete", true, Delete},
    {"icon", true, MakeIcon},  {"record", false, Record, true}, {"rewrap", false, MakePlayable},
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
        m_stage.to.MakeFolder("CONTENTS/CLIP");
        if (GetParam().hasClip) {
            std::filesystem::copy(m_stage.card.Folder().Path(), m_stage.to.Path(),
                                  std::filesystem::copy_options::recursive);
        }
    }
    bool Request(OpenParser& parser) { return GetParam().request(m_stage, parser); }

    /// Every call that the worker makes for the request, which succeeds.
    std::vector<SystemCall> CallsOfTheRequest() {
        m_stage.StartWorker();
        Prepare();
        m_prepared = FilesBelow(m_stage.to.Path());
        {
            OpenParser parser;
            const test::Tracer tracer(test::ChildNamed("nqp2-worker"), {"-o", m_trace});
            EXPECT_TRUE(Request(parser));
        }
        LeaveWorker();
        m_finished = FilesBelow(m_stage.to.Path());
        return TakeCalls();
    }
    std::vector<SystemCall> TakeCalls() {
        std::vector<SystemCall> calls = test::CallsIn(m_trace);
        std::filesystem::remove(m_trace);
        EXPECT_GT(calls.size(), 20U);
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
    void ExpectNothingHidden() {
        for (const auto& [name, content] : FilesBelow(m_stage.to.Path())) {
            EXPECT_FALSE(IsHidden(name)) << name;
        }
    }
    /// Another parser does the same once more, and what the killed left hidden is gone.
    void ExpectTheNextMakesGood() {
        OpenParser parser;
        Request(parser); // of a clip that is deleted already nothing is left to delete
        ExpectNothingHidden();
        if (!GetParam().differs) {
            EXPECT_TRUE(FilesBelow(m_stage.to.Path()) == m_finished);
        } else {
            EXPECT_FALSE(FilesBelow(m_stage.to.Path("CONTENTS/CLIP")).empty());
        }
    }

    /// Lets some of the calls of a request fail or end the worker; how many did the latter.
    int StrikeAt(const std::vector<SystemCall>& calls, const char* fate) {
        int kills = 0;
        for (const SystemCall& call : calls) {
            SCOPED_TRACE(Inject(call, fate));
            Prepare();
            const pid_t worker = m_stage.StartWorker();
            {
                OpenParser parser;
                const test::Tracer tracer(worker, {"-o", "/dev/null", "-e", Inject(call, fate)});
                auto answer = std::async(std::launch::async, [&] { return Request(parser); });
                EXPECT_EQ(answer.wait_for(5s), std::future_status::ready) << "the caller waits";
            }
            kills += test::IsRunning(worker) ? 0 : 1;
            ExpectNoHalfThing();
            m_stage.StartWorker();
            ExpectTheNextMakesGood();
            LeaveWorker();
        }
        return kills;
    }

    /// What a library process does from its beginning to its end; whether it was killed.
    bool RunHost(const WorkerSettings& worker, const std::vector<std::string>& options,
                 test::Traced traced) {
        Prepare();
        const pid_t host = fork();
        if (host == 0) {
            raise(SIGSTOP);
            static_cast<void>(UseWorker(worker));
            {
                OpenParser parser;
                Request(parser);
            }
            LeaveWorker();
            // The thread sanitizer misses the parent's threads in _exit and starts a program to
            // say so, whose calls are none of the host's: nearly all kills would hit it.
            syscall(SYS_exit_group, 0);
        }
        EXPECT_EQ(waitpid(host, nullptr, WUNTRACED), host);
        const test::Tracer tracer(host, options, traced);
        kill(host, SIGCONT);
        int status = 0;
        EXPECT_EQ(waitpid(host, &status, 0), host);
        return WIFSIGNALED(status);
    }
    /// Kills such a process at some of its calls; what holds each time.
    void KillHosts(const WorkerSettings& worker, test::Traced traced,
                   const std::function<void()>& check) {
        EXPECT_FALSE(RunHost(worker, {"-o", m_trace}, traced));
        int kills = 0;
        for (const SystemCall& call : test::SomeOf(TakeCalls(), KillsEach())) {
            const std::string kill = Inject(call, "signal=KILL");
            SCOPED_TRACE(kill);
            kills += RunHost(worker, {"-o", "/dev/null", "-e", kill}, traced) ? 1 : 0;
            check();
            ExpectNoHalfThing();
        }
        EXPECT_GT(kills, 1);
    }

    WorkerStage m_stage;
    const std::string m_trace = m_stage.to.Path() + "-trace";
    Tree m_source;
    Tree m_prepared;
    Tree m_finished;
};

TEST_P(KillTest, AWorkerKilledAtAnyCallLeavesNothingHalf) {
    const std::vector<SystemCall> calls = CallsOfTheRequest();
    const test::Holdings before = test::Settled();
    EXPECT_GT(StrikeAt(test::SomeOf(calls, KillsEach()), "signal=KILL"), 1);
    EXPECT_TRUE(test::IsBackTo(before));
}

/// A medium that fails now and then: the worker lives on and clears up itself.
TEST_P(KillTest, ACallThatFailsLeavesNothingHalf) {
    std::vector<SystemCall> calls = CallsOfTheRequest();
    std::erase_if(calls, [](const SystemCall& call) { return !IsOfTheMedium(call); });
    std::vector<SystemCall> failing = test::SomeOf(calls, KillsEach());
    std::erase_if(calls, [](const SystemCall& call) { return call.name != "fsync"; });
    if (!calls.empty()) {
        failing.push_back(calls.back()); // of the folder, when the last name has been given
    }
    EXPECT_EQ(StrikeAt(failing, "error=EIO"), 0);
}

/// The library's process is killed instead: the worker drops what it was asked for and lives on.
TEST_P(KillTest, AHostKilledAtAnyCallEndsItsRequestAndNotTheWorker) {
    CallsOfTheRequest();
    const std::string worker = std::to_string(m_stage.StartWorker());
    ExpectTheNextMakesGood();
    const test::Holdings before = test::Settled(worker);
    KillHosts({.socket = m_stage.socket.Socket()}, test::Traced::All, [&] {
        EXPECT_TRUE(test::IsBackTo(before, 0, worker));
        ExpectNothingHidden();
        ExpectNoHalfThing();
        ExpectTheNextMakesGood();
    });
}

/// A worker that is bound to its host goes with it, whatever the host was about to do.
TEST_P(KillTest, AWorkerBoundToItsHostEndsWithIt) {
    CallsOfTheRequest();
    prctl(PR_SET_CHILD_SUBREAPER, 1); // orphans come to this process, which sees them end
    KillHosts({.program = NQP2_WORKER_PROGRAM, .socket = m_stage.socket.Socket()},
              test::Traced::FirstThread, [&] {
                  // One that is on the way to be a worker does not have its name yet.
                  EXPECT_TRUE(test::Eventually(
                      [] { return waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD; }));
                  EXPECT_EQ(test::CountEntries(m_stage.socket.Path()), 0U) << "its socket";
              });
    prctl(PR_SET_CHILD_SUBREAPER, 0);
}

/// Asked to end in the middle of a request: it ends in order, which an access to memory that is
/// gone is not, and clears up.
TEST_P(KillTest, AWorkerThatIsAskedToEndAtAnyMomentEndsInOrder) {
    m_stage.card.AddFile("VIDEO/0001AB.MXF", Essence(8'000'000, 1));
    for (std::size_t i = 0; i < 3 * KillsEach(); ++i) {
        SCOPED_TRACE(i);
        Prepare();
        const pid_t worker = m_stage.StartWorker();
        OpenParser parser;
        auto answer = std::async(std::launch::async, [&] { return Request(parser); });
        std::this_thread::sleep_for(i * i * 300us); // an import takes some 40 ms
        kill(worker, SIGTERM);
        siginfo_t ended{};
        EXPECT_TRUE(test::Eventually([&] { // the library may have taken its end already
            return waitid(P_PID, static_cast<id_t>(worker), &ended, WEXITED | WNOWAIT | WNOHANG) !=
                       0 ||
                   ended.si_pid != 0;
        }));
        EXPECT_TRUE(ended.si_pid == 0 || (ended.si_code == CLD_EXITED && ended.si_status == 0))
            << ended.si_code << ' ' << ended.si_status;
        EXPECT_EQ(answer.wait_for(3s), std::future_status::ready);
        ExpectNothingHidden();
        LeaveWorker();
    }
}

INSTANTIATE_TEST_SUITE_P(Requests, KillTest, testing::ValuesIn(kScenarios),
                         [](const auto& each) { return std::string(each.param.name); });

} // namespace
} // namespace nqp2::worker
