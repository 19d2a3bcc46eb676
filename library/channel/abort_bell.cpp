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

struct BellState {
    std::mutex mutex;
    std::weak_ptr<const platform::Descriptor> bell; ///< there while somebody waits
    std::vector<const std::int32_t*> flags;         ///< that are set only with ringing
    platform::Owner owner;
};

/// Never destroyed: threads of the library may outlive static objects.
BellState& State() {
    static auto& state = *new BellState;
    return state;
}

/// A child that the host forked shares the descriptor and has none of the threads: it begins anew.
template <class Use>
auto WithState(Use use) {
    BellState& state = State();
    const std::lock_guard lock(state.mutex);
    if (!state.owner.IsThisProcess()) {
        state.bell.reset();
        state.flags.clear();
        state.owner = {};
    }
    return use(state);
}

std::shared_ptr<const platform::Descriptor> MakeBell(BellState& state) {
    platform::Descriptor fresh(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!fresh) {
        return nullptr;
    }
    auto bell = std::make_shared<const platform::Descriptor>(std::move(fresh));
    state.bell = bell;
    return bell;
}

} // namespace

std::shared_ptr<const platform::Descriptor> AbortBell() {
    return platform::Guarded(std::shared_ptr<const platform::Descriptor>(), [] {
        return WithState([](BellState& state) {
            const auto bell = state.bell.lock();
            return bell != nullptr ? bell : MakeBell(state);
        });
    });
}

/// A bell that has rung stays readable: the next ones who wait get another.
void RingAbortBell() {
    WithState([](BellState& state) {
        if (const auto bell = state.bell.lock()) {
            eventfd_write(bell->Get(), 1);
        }
        state.bell.reset();
    });
}

RungFlag::RungFlag(const std::int32_t& flag) : m_flag(flag) {
    // Without memory it is looked at as others are.
    platform::Guarded([&] { WithState([&](BellState& state) { state.flags.push_back(&flag); }); });
}

RungFlag::~RungFlag() {
    WithState([&](BellState& state) { std::erase(state.flags, &m_flag); });
}

bool IsRungFor(const std::int32_t* flag) {
    return WithState([flag](BellState& state) {
        return std::find(state.flags.begin(), state.flags.end(), flag) != state.flags.end();
    });
}

} // namespace nqp2::channel
