// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Hosts and workers as processes of their own.

#include "tests/channel/channel_test.h"
#include "tests/support/child_process.h"

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <tuple>

namespace nqp2::test {
namespace {

const char* const kProgram = NQP2_ECHO_WORKER;

pid_t Worker() {
    return ChildNamed(std::filesystem::path(kProgram).filename());
}

class WorkerProcessTest : public testing::Test {
public:
    ~WorkerProcessTest() override { LeaveWorker(); }

    static ChannelHandle Open(std::uint32_t size = 4096, std::uint32_t timeOut = kForEver) {
        return Host().CreateChannel(20000, size, size, timeOut, timeOut);
    }
    /// Sends a message and compares what comes back; the first status that is not 1.
    static std::int32_t Ask(ChannelHandle channel, std::uint32_t length) {
        const std::int32_t status = SendPattern(Host(), channel, 1, length);
        if (status != kChannelDone) {
            return status;
        }
        const Received answer = Receive(Host(), channel);
        if (answer.status == kChannelDone) {
            EXPECT_TRUE(answer.length == length && HasPattern(answer.buffer, length, 1));
            Host().ReleasePacket(channel, answer.buffer, answer.length);
        }
        return answer.status;
    }

protected:
    SocketFolder m_folder;
};

TEST_F(WorkerProcessTest, AWorkerEndsWithItsLastHostHoweverThatDied) {
    const std::pair<const char*, std::function<void()>> ends[] = {
        {"left with open channels", [] { _exit(Ask(Open(), 3)); }},
        {"the thread that started it ended, then the host",
         [] { std::thread([] { EXPECT_TRUE(UseWorker({.program = kProgram})); }).join(); }},
        {"a child lives on",
         [] {
             if (fork() == 0) {
                 sleep(3);
             }
             _exit(0);
         }},
    };
    for (const auto& [name, end] : ends) {
        SCOPED_TRACE(name);
        RunInChild([&, &end = end] {
            static_cast<void>(UseWorker({.program = kProgram}));
            m_folder.Write("pid", std::to_string(Worker()));
            end();
            return 0;
        });
        pid_t worker = 0;
        std::ifstream(m_folder.Path("pid")) >> worker;
        ASSERT_GT(worker, 0);
        EXPECT_LT(TimeOf([&] { EXPECT_TRUE(Eventually([&] { return !IsRunning(worker); })); }),
                  kSlack);
    }
}

TEST_F(WorkerProcessTest, WhatDoesNotStartInTimeIsReportedAndOtherChildrenStayTheHosts) {
    const Holdings before = Settled();
    const pid_t other = fork();
    if (other == 0) {
        _exit(9);
    }
    const auto start = [] {
        const WorkerStatus status =
            UseWorker({.program = kProgram, .arguments = {"--deaf"}, .startMilliseconds = 50});
        EXPECT_NE(status.reason.find("in time"), std::string::npos);
    };
    EXPECT_LT(TimeOf(start), 50 + kSlack);
    EXPECT_FALSE(UseWorker({}));
    EXPECT_EQ(Open(), 0U);
    EXPECT_TRUE(IsBackTo(before));
    EXPECT_EQ(waitpid(other, nullptr, 0), other);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "none is left";
}

/// A filter under which one system call fails with that error, in this process and its children.
void FailCall(long call, int error) {
    const sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call), 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
    const sock_fprog filter{std::size(program), const_cast<sock_filter*>(program)};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0) {
        _exit(77);
    }
}

/// A handled signal every 100 microseconds, on whatever thread the system picks.
void StartTimer() {
    std::signal(SIGALRM, [](int) {});
    const itimerval often{{0, 100}, {0, 100}};
    setitimer(ITIMER_REAL, &often, nullptr);
}

void ReapEveryChild() {
    std::thread([] {
        while (true) {
            waitpid(-1, nullptr, 0);
        }
    }).detach();
}

/// Hosts as few are, each in a process of its own.
const std::pair<const char*, std::function<void()>> kOddHosts[] = {
    {"ignores SIGCHLD", [] { std::signal(SIGCHLD, SIG_IGN); }},
    {"reaps all children", ReapEveryChild},
    {"blocks and ignores SIGTERM",
     [] {
         std::signal(SIGTERM, SIG_IGN);
         sigset_t all;
         sigfillset(&all);
         pthread_sigmask(SIG_SETMASK, &all, nullptr);
     }},
    {"no standard files", [] { close(0), close(1), close(2); }},
    {"no pidfds", [] { FailCall(SYS_pidfd_open, ENOSYS); }},
    {"pidfds that take no signals", [] { FailCall(SYS_pidfd_send_signal, EPERM); }},
    {"no close_range", [] { FailCall(SYS_close_range, ENOSYS); }},
    {"a timer", StartTimer},
};

/// 0, or the number of the first thing that was not as it should be.
int UseWorkerOddly(const std::string& socket) {
    int step = 0;
    int failed = 0;
    const auto expect = [&](bool isSound) {
        ++step;
        failed = failed == 0 && !isSound ? step : failed;
    };
    const std::size_t before = HeldBy()["descriptors"];
    expect(UseWorker({.program = "/nowhere/worker"}).reason.find("No such file") !=
           std::string::npos);
    expect(UseWorker({.program = "/bin/false"}).reason.find("ended") != std::string::npos);
    expect(static_cast<bool>(UseWorker({.program = kProgram, .socket = socket})));
    const pid_t worker = Worker();
    for (const char* const number : {"0", "1", "2"}) {
        const std::string file = "/proc/" + std::to_string(worker) + "/fd/" + number;
        std::error_code error;
        const std::string target = std::filesystem::read_symlink(file, error).string();
        expect(!error && target.find("socket:") == std::string::npos);
    }
    ChannelHandle channel = WorkerProcessTest::Open(64, 30);
    expect(WorkerProcessTest::Ask(channel, 10) == kChannelDone);
    const long silence = TimeOf([&] { expect(NextId(Host(), channel) == kChannelTimedOut); });
    expect(silence >= 30); // waited for to the end
    LeaveWorker();
    expect(!IsRunning(worker));
    expect(WorkerProcessTest::Ask(channel, 10) == kChannelClosed);
    Host().CloseChannel(&channel);
    expect(Eventually([&] { return HeldBy()["descriptors"] == before; }));
    return failed;
}

TEST_F(WorkerProcessTest, StartsAndEndsInHostsAsFewAre) {
    for (const auto& [name, become] : kOddHosts) {
        EXPECT_EQ(RunInChild([&, &become = become] {
                      become();
                      return UseWorkerOddly(m_folder.Socket());
                  }),
                  0)
            << name << ": the number of the step that failed";
        EXPECT_EQ(CountEntries(m_folder.Path()), 0U) << name;
    }
}

/// The set-up of worker and channels in a process of its own, with a limit on that or a call of it
/// failing: 0 when nothing hangs, crashes or is left behind, whatever came of it.
int SetUpWith(const std::function<void()>& limit, const std::function<void()>& unlimit) {
    return RunInChild([&] {
        alarm(30);
        static_cast<void>(Settled());
        const Holdings before = Settled();
        limit();
        const bool isUsed = static_cast<bool>(UseWorker({.program = kProgram}));
        ChannelHandle channel = WorkerProcessTest::Open(kRequestSize, 3000);
        ChannelHandle sub = Host().OpenSubChannel(channel, 50, 64, 64, 0, 3000);
        const std::int32_t answer = channel != 0 ? WorkerProcessTest::Ask(channel, 100) : 0;
        unlimit();
        Host().CloseChannel(&sub);
        Host().CloseChannel(&channel);
        LeaveWorker();
        const bool isSound = answer <= kChannelDone && (isUsed || channel == 0);
        return isSound && IsBackTo(before) && Worker() == 0 ? 0 : 1;
    });
}

void Limit(__rlimit_resource resource, rlim_t limit) {
    rlimit now{};
    getrlimit(resource, &now);
    now.rlim_cur = std::min(limit, now.rlim_max);
    setrlimit(resource, &now);
}

TEST_F(WorkerProcessTest, ASetUpThatFailsAnywhereHangsNowhereAndLeavesNothing) {
#ifndef NQP2_MEMORY_IS_INSTRUMENTED // a sanitizer opens a pipe to look at memory
    const std::size_t open = HeldBy()["descriptors"];
    for (std::size_t more = 0; more < 16; ++more) {
        EXPECT_EQ(SetUpWith([&] { Limit(RLIMIT_NOFILE, open + more); },
                            [] { Limit(RLIMIT_NOFILE, 1024); }),
                  0)
            << more << " more descriptors";
    }
#endif
    EXPECT_EQ(
        SetUpWith([] { Limit(RLIMIT_FSIZE, 16384); }, [] { Limit(RLIMIT_FSIZE, RLIM_INFINITY); }),
        0)
        << "short files";
    constexpr std::tuple<const char*, long, int> kFailures[] = {
        {"socketpair", SYS_socketpair, EMFILE}, {"memfd_create", SYS_memfd_create, EMFILE},
        {"ftruncate", SYS_ftruncate, EFBIG},    {"sendmsg", SYS_sendmsg, EPERM},
        {"recvmsg", SYS_recvmsg, EPERM},        {"clone3", SYS_clone3, EAGAIN},
        {"execve", SYS_execve, EACCES},         {"pidfd_open", SYS_pidfd_open, EMFILE},
        {"eventfd2", SYS_eventfd2, EMFILE},     {"getsockopt", SYS_getsockopt, ENOBUFS},
        {"sendto", SYS_sendto, ENOBUFS}};
    for (const auto& [name, call, error] : kFailures) {
        EXPECT_EQ(SetUpWith([call = call, error = error] { FailCall(call, error); }, [] {}), 0)
            << name;
    }
}

} // namespace
} // namespace nqp2::test
