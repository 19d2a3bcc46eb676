// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bench/fleet.h"

#include "bench/measure.h"

#include <cstdio>
#include <exception>
#include <fmt/core.h>
#include <sys/wait.h>
#include <unistd.h>

namespace nqp2::bench {
namespace {

void Close(int& end) {
    close(end);
    end = -1;
}

} // namespace

Fleet::Fleet() {
    Require(pipe(m_ready.data()) == 0 && pipe(m_start.data()) == 0, "no pipe");
}

Fleet::~Fleet() {
    for (const int end : {m_ready[0], m_ready[1], m_start[0], m_start[1]}) {
        close(end);
    }
}

void Fleet::Add(const std::function<void(const std::function<void()>& wait)>& work) {
    const pid_t child = fork();
    Require(child >= 0, "no process");
    if (child > 0) {
        m_children.push_back(child);
        return;
    }
    int status = 1;
    try {
        Close(m_start[1]);
        work([this] {
            char byte = 0;
            Require(write(m_ready[1], "r", 1) == 1 && read(m_start[0], &byte, 1) == 0,
                    "not waited for the others");
        });
        status = 0;
    } catch (const std::exception& error) {
        fmt::print(stderr, "a writer: {}\n", error.what());
    }
    _exit(status);
}

double Fleet::Run() {
    Close(m_ready[1]);
    char byte = 0;
    for (std::size_t i = 0; i < m_children.size(); ++i) {
        Require(read(m_ready[0], &byte, 1) == 1, "a process has failed before it began");
    }
    const double begin = Now(Clock::Wall);
    Close(m_start[1]);
    bool isDone = true;
    for (const pid_t child : m_children) {
        int status = 0;
        isDone = waitpid(child, &status, 0) == child && status == 0 && isDone;
    }
    Require(isDone, "a process has failed");
    return Now(Clock::Wall) - begin;
}

} // namespace nqp2::bench
