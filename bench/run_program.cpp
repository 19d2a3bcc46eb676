// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bench/run_program.h"

#include "bench/measure.h"

#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace nqp2::bench {
namespace {

double Nanoseconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_usec) * 1e3;
}

pid_t Start(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (const std::string& each : command) {
        arguments.push_back(const_cast<char*>(each.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int error =
        posix_spawnp(&child, arguments.front(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw std::runtime_error(command.front() + " does not start");
    }
    return child;
}

} // namespace

ProgramCost RunProgram(const std::vector<std::string>& command) {
    const double start = Now(Clock::Wall);
    const pid_t child = Start(command);
    int status = 0;
    rusage usage{};
    Require(wait4(child, &status, 0, &usage) == child, "a program is lost");
    const double wall = Now(Clock::Wall) - start;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw std::runtime_error(command.front() + " has failed");
    }
    return {wall, Nanoseconds(usage.ru_utime) + Nanoseconds(usage.ru_stime),
            static_cast<double>(usage.ru_maxrss) * 1024};
}

} // namespace nqp2::bench
