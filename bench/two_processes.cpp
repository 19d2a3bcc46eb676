// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bench/two_processes.h"

#include <atomic>
#include <cstring>
#include <filesystem>
#include <linux/futex.h>
#include <new>
#include <sched.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace nqp2::bench {
namespace {

int processors = 2;

/// Of the first `count` processors, from `first`.
void MayRunOn(int first, int count) {
    cpu_set_t set;
    CPU_ZERO(&set);
    for (int i = first; i < first + count; ++i) {
        CPU_SET(static_cast<std::size_t>(i), &set);
    }
    Require(sched_setaffinity(0, sizeof(set), &set) == 0, "the processors cannot be chosen");
}

} // namespace

void UseProcessors(int count) {
    Require(count <= sysconf(_SC_NPROCESSORS_ONLN), "there are not as many processors");
    processors = count;
    MayRunOn(0, 1); // where it stays, as long as nothing drives it away
    MayRunOn(0, count);
}

pid_t RunBeside(const std::function<void()>& body, Stay stay) {
    const pid_t child = fork();
    Require(child >= 0, "no process can be made");
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        MayRunOn(processors - 1, 1);
        if (stay == Stay::Begins) {
            MayRunOn(0, processors);
        }
        body();
        _exit(0);
    }
    return child;
}

void End(pid_t child) {
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

std::uint64_t Sum(const void* bytes, std::size_t length) {
    const auto* const text = static_cast<const char*>(bytes);
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i + sizeof(std::uint64_t) <= length; i += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, text + i, sizeof(word));
        sum += word;
    }
    return sum;
}

ScratchFolder::ScratchFolder() {
    std::string path = (std::filesystem::temp_directory_path() / "nqp2-bench-XXXXXX").string();
    Require(mkdtemp(path.data()) != nullptr, "no scratch folder");
    m_path = path;
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

/// A word that the two processes pass to and fro, and the bytes behind it.
struct BareTalk::Shared {
    std::atomic<std::uint32_t> turn = 0;
    alignas(4096) char bytes[1];

    void Pass(std::uint32_t next) {
        turn.store(next, std::memory_order_release);
        syscall(SYS_futex, &turn, FUTEX_WAKE, 1, nullptr, nullptr, 0);
    }
    void Await(std::uint32_t wanted) {
        for (std::uint32_t seen = 0; (seen = turn.load(std::memory_order_acquire)) != wanted;) {
            syscall(SYS_futex, &turn, FUTEX_WAIT, seen, nullptr, nullptr, 0);
        }
    }
};

BareTalk::BareTalk(std::size_t length) : m_length(length) {
    void* const memory = mmap(nullptr, sizeof(Shared) + length, PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    Require(memory != MAP_FAILED, "no memory to share");
    m_shared = new (memory) Shared;
    m_reader = RunBeside(
        [this] {
            while (true) {
                m_shared->Await(1);
                Keep(Sum(m_shared->bytes, m_length));
                m_shared->Pass(2);
            }
        },
        Stay::Held);
}

BareTalk::~BareTalk() {
    End(m_reader);
    munmap(m_shared, sizeof(Shared) + m_length);
}

Subject BareTalk::Measured(std::string name, const void* bytes) {
    return {std::move(name), [this, bytes] { Tell(bytes); }, [] { MayRunOn(0, 1); },
            [] { MayRunOn(0, processors); }, true};
}

void BareTalk::Tell(const void* bytes) {
    std::memcpy(m_shared->bytes, bytes, m_length);
    m_shared->Pass(1);
    m_shared->Await(2);
}

} // namespace nqp2::bench
