// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// The worker, and the library's process, killed at the system calls of a request; and calls of the
// worker that fail. NQP2_KILLS=1000 takes every call of every request; a few of each are the default.

#include "bridge/R8P2SysInterface.h"
#include "bridge/R8P2TransInfo.h"
#include "channel/Channel.h"
#include "channel/process_descriptor.h"
#include "parser/NQP2Parser.h"
#include "tests/channel/channel_test.h"
#include "tests/support/child_process.h"
#include "tests/support/tracing.h"
#include "tests/worker/transfer_fixture.h"

#include <csignal>
#include <cstdlib>
#include <future>
#include <gtest/gtest.h>
#include <poll.h>

namespace nqp2::worker {
namespace {

using namespace std::chrono_literals;

using Tree = std::map<std::string, std::string>;
using test::SystemCall;

std::size_t KillsEach() {
    const char* const asked = std::getenv("NQP2_KILLS");
    return asked != nullptr ? static_cast<std::size_t>(std::atoi(asked)) : 6;
}

/// Whether a call reads or writes files, and no channel.
bool IsOfTheMedium(const std::string& call) {
    constexpr const char* kCalls[] = {
        "fsync", "ftruncate", "getdents64", "mkdir", "openat",   "open",   "pread64", "pwrite64",
        "read",  "renameat2", "newfstatat", "fstat", "unlinkat", "unlink", "statx",   "statfs"};
    return std::find(std::begin(kCalls), std::end(kCalls), call) != std::end(kCalls);
}

bool IsHidden(const std::string& name) {
    return name.find("/.nqp2-") != std::string::npos;
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

/// What is done to `to` or to the card, and what must hold of `to` afterwards however it went.
struct Scenario {
    const char* name;
    void (*prepare)(const Stage&);
    bool (*request)(const Stage&, CNQP2Parser&);
};

void Nothing(const Stage&) {}

/// A second copy of the clip, to be worked on.
void CopyClip(const Stage& stage) {
    std::filesystem::copy(stage.card.Folder().Path(), stage.to.Path(),
                          std::filesystem::copy_options::recursive);
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

const Scenario kScenarios[] = {
    {"import", Nothing, Import},
    {"export", Nothing, Export},
    {"delete", CopyClip, Delete},
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
        CNQP2Parser parser;
        EXPECT_EQ(parser.Init(), 0);
        {
            const test::Tracer tracer(test::ChildNamed("nqp2-worker"), {"-o", trace});
            EXPECT_TRUE(Request(parser));
        }
        parser.Release();
        LeaveWorker();
        m_finished = FilesBelow(m_stage.to.Path());
        return test::CallsIn(trace);
    }

    /// Whole files only, and the metadata only beside all others.
    void ExpectNoHalfThing() {
        const Tree found = FilesBelow(m_stage.to.Path());
        std::size_t named = 0;
        for (const auto& [name, content] : found) {
            if (!IsHidden(name)) {
                EXPECT_TRUE(content == m_source.at(name)) << name;
                ++named;
            }
        }
        EXPECT_TRUE(found.count("CONTENTS/CLIP/0001AB.XML") == 0 || named == kFilesOfAClip);
        EXPECT_EQ(FilesBelow(m_stage.card.Folder().Path()), m_source);
    }

    /// Another parser and another worker do the same once more.
    void ExpectTheNextMakesGood() {
        m_stage.StartWorker();
        CNQP2Parser parser;
        EXPECT_EQ(parser.Init(), 0);
        Request(parser); // of a clip that is deleted already nothing is left to delete
        parser.Release();
        EXPECT_EQ(FilesBelow(m_stage.to.Path()), m_finished);
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
        EXPECT_EQ(answer.wait_for(1s), std::future_status::ready);
        static_cast<void>(answer.get());
        parser.Release();
        return HasEnded(life, 0);
    }

    static bool HasEnded(const platform::Descriptor& process, int milliseconds) {
        pollfd watched{process.Get(), POLLIN, 0};
        return poll(&watched, 1, milliseconds) > 0;
    }

    Stage m_stage;
    Tree m_source;
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
        ExpectTheNextMakesGood();
        LeaveWorker();
    }
    EXPECT_GT(kills, 2);
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
        ExpectNoHalfThing();
        Request(parser);
        parser.Release();
        EXPECT_EQ(FilesBelow(m_stage.to.Path()), m_finished);
        LeaveWorker();
    }
}

/// The library's process is killed instead: the worker drops what it was asked for.
TEST_P(KillTest, AKilledHostEndsItsRequestAndNotTheWorker) {
    CallsOfTheRequest();
    const pid_t worker = m_stage.StartWorker();
    const test::Holdings before = test::Settled(std::to_string(worker));
    for (int i = 0; i < 10; ++i) {
        Prepare();
        const pid_t host = fork();
        if (host == 0) {
            static_cast<void>(UseWorker({.socket = m_stage.socket.Socket()}));
            CNQP2Parser parser;
            parser.Init();
            Request(parser);
            _exit(0);
        }
        std::this_thread::sleep_for(i * 2ms);
        kill(host, SIGKILL);
        waitpid(host, nullptr, 0);
        EXPECT_TRUE(test::IsBackTo(before, 0, std::to_string(worker)));
        ExpectNoHalfThing();
    }
    CNQP2Parser parser;
    EXPECT_EQ(parser.Init(), 0);
    Request(parser);
    parser.Release();
    EXPECT_EQ(FilesBelow(m_stage.to.Path()), m_finished);
}

INSTANTIATE_TEST_SUITE_P(Requests, KillTest, testing::ValuesIn(kScenarios),
                         [](const auto& each) { return std::string(each.param.name); });

} // namespace
} // namespace nqp2::worker
