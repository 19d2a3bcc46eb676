// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/Interrupt.h"

#include <atomic>
#include <csignal>
#include <unistd.h>

namespace {

/// How long what was interrupted may take to end by itself.
constexpr unsigned kPatienceSeconds = 5;

std::atomic<bool> interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "is set by a signal handler");

void Remember(int) {
    interrupted = true;
    alarm(kPatienceSeconds);
}

/// The second one, which has its usual meaning again.
void InterruptAgain(int) {
    std::raise(SIGINT);
}

/// Lets the first of the signal set the flag, unless somebody else has a use for it.
void CatchFirst(int signal) {
    struct sigaction before = {};
    if (sigaction(signal, nullptr, &before) != 0 || before.sa_handler != SIG_DFL) {
        return;
    }
    struct sigaction once = {};
    once.sa_handler = Remember;
    // System calls of threads that know nothing of this go on.
    once.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
    sigaction(signal, &once, nullptr);
}

} // namespace

namespace nqp2 {

void CatchInterrupt() noexcept {
    CatchFirst(SIGINT);
    CatchFirst(SIGTERM);
    struct sigaction late = {};
    late.sa_handler = InterruptAgain;
    sigaction(SIGALRM, &late, nullptr);
}

bool WasInterrupted() noexcept {
    return interrupted;
}

} // namespace nqp2
