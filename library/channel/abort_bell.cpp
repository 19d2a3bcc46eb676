// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/abort_bell.h"

#include "platform/guard.h"
#include "platform/process.h"

#include <mutex>
#include <sys/eventfd.h>
#include <utility>

namespace nqp2::channel {
namespace {

struct Hung {
    std::mutex mutex;
    std::weak_ptr<const platform::Descriptor> bell; ///< there while somebody waits
    platform::Owner owner;                          ///< a child shares the descriptor
};

/// Never destroyed: threads of the library may outlive static objects.
Hung& TheBell() {
    static auto& hung = *new Hung;
    return hung;
}

} // namespace

std::shared_ptr<const platform::Descriptor> AbortBell() {
    return platform::Guarded(std::shared_ptr<const platform::Descriptor>(), [] {
        Hung& hung = TheBell();
        const std::lock_guard lock(hung.mutex);
        auto bell = hung.owner.IsThisProcess() ? hung.bell.lock() : nullptr;
        platform::Descriptor fresh(bell == nullptr ? eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK) : -1);
        if (fresh) {
            bell = std::make_shared<const platform::Descriptor>(std::move(fresh));
            hung.bell = bell;
            hung.owner = {};
        }
        return bell;
    });
}

/// A bell that has rung stays readable: the next ones who wait get another.
void RingAbortBell() {
    Hung& hung = TheBell();
    const std::lock_guard lock(hung.mutex);
    if (hung.owner.IsThisProcess()) {
        if (const auto bell = hung.bell.lock()) {
            eventfd_write(bell->Get(), 1);
        }
        hung.bell.reset();
    }
}

} // namespace nqp2::channel
