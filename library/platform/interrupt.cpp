// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/Interrupt.h"

#include <atomic>
#include <csignal>
#include <unistd.h>

namespace {

/// How long what was interrupted may take to end by itself.
constexpr unsigned kPatienceSeconds = 5;

/// The signal that came first; 0 before that.
std::atomic<int> interruption = 0;
static_assert(std::atomic<int>::is_always_lock_free, "is set by a signal handler");

/// Lets the signal do what it does by itself, as soon as its handler has ended.
void EndBy(int signal) {
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void Remember(int signal) {
    int none = 0;
    if (interruption.compare_exchange_strong(none, signal)) {
        alarm(kPatienceSeconds);
    } else {
        EndBy(signal);
    }
}

void EndLate(int /*alarm*/) {
    EndBy(interruption);
}

void Handle(int signal, void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    // System calls of threads that know nothing of this go on.
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
}

} // namespace

namespace nqp2 {

void CatchInterrupt() noexcept {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before = {};
        if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_DFL) {
            Handle(SIGALRM, EndLate);
            Handle(signal, Remember);
        }
    }
}

bool WasInterrupted() noexcept {
    return interruption != 0;
}

} // namespace nqp2
