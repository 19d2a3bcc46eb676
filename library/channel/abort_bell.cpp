// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/abort_bell.h"

#include "platform/guard.h"
#include "platform/process.h"

#include <algorithm>
#include <mutex>
#include <sys/eventfd.h>
#include <utility>
#include <vector>

namespace nqp2::channel {
namespace {

struct Hung {
    std::mutex mutex;
    std::weak_ptr<const platform::Descriptor> bell; ///< there while somebody waits
    std::vector<const std::int32_t*> flags;         ///< that are set only with ringing
    platform::Owner owner;
};

/// Never destroyed: threads of the library may outlive static objects.
Hung& TheBell() {
    static auto& hung = *new Hung;
    return hung;
}

/// A child that the host forked shares the descriptor and has none of the threads: it begins anew.
template <class Use>
auto WithTheBell(Use use) {
    Hung& hung = TheBell();
    const std::lock_guard lock(hung.mutex);
    if (!hung.owner.IsThisProcess()) {
        hung.bell.reset();
        hung.flags.clear();
        hung.owner = {};
    }
    return use(hung);
}

std::shared_ptr<const platform::Descriptor> Hang(Hung& hung) {
    platform::Descriptor fresh(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!fresh) {
        return nullptr;
    }
    auto bell = std::make_shared<const platform::Descriptor>(std::move(fresh));
    hung.bell = bell;
    return bell;
}

} // namespace

std::shared_ptr<const platform::Descriptor> AbortBell() {
    return platform::Guarded(std::shared_ptr<const platform::Descriptor>(), [] {
        return WithTheBell([](Hung& hung) {
            const auto bell = hung.bell.lock();
            return bell != nullptr ? bell : Hang(hung);
        });
    });
}

/// A bell that has rung stays readable: the next ones who wait get another.
void RingAbortBell() {
    WithTheBell([](Hung& hung) {
        if (const auto bell = hung.bell.lock()) {
            eventfd_write(bell->Get(), 1);
        }
        hung.bell.reset();
    });
}

RungFlag::RungFlag(const std::int32_t& flag) : m_flag(flag) {
    // Without memory it is looked at as others are.
    platform::Guarded([&] { WithTheBell([&](Hung& hung) { hung.flags.push_back(&flag); }); });
}

RungFlag::~RungFlag() {
    WithTheBell([&](Hung& hung) { std::erase(hung.flags, &m_flag); });
}

bool IsRungFor(const std::int32_t* flag) {
    return WithTheBell([flag](Hung& hung) {
        return std::find(hung.flags.begin(), hung.flags.end(), flag) != hung.flags.end();
    });
}

} // namespace nqp2::channel
