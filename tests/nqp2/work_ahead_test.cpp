// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/work_ahead.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <gtest/gtest.h>
#include <optional>
#include <ostream>
#include <pthread.h>
#include <string>
#include <thread>
#include <vector>

namespace nqp2::tool {
namespace {

struct Case {
    std::string name;
    std::size_t bytes; ///< that each thing takes
    std::size_t
        mostAhead; ///< beside one for each thread: things that may be made and not yet shown
    bool hasThreads = true;
    std::size_t count = 300;
    std::size_t shown = count; ///< so many of them are
};

void PrintTo(const Case& each, std::ostream* out) {
    *out << each.name;
}

/// No thread can start: none gets so large a stack.
class NoThreads {
public:
    NoThreads() {
        pthread_getattr_default_np(&m_before);
        pthread_attr_t none = m_before;
        pthread_attr_setstacksize(&none, std::size_t{1} << 60U);
        pthread_setattr_default_np(&none);
    }
    ~NoThreads() { pthread_setattr_default_np(&m_before); }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

private:
    pthread_attr_t m_before{};
};

class WorkAheadTest : public ::testing::TestWithParam<Case> {};

TEST_P(WorkAheadTest, MakesEachThingOnceInOrderAndWithinBounds) {
    const auto [name, bytes, mostAhead, hasThreads, count, last] = GetParam();
    const std::size_t threads =
        hasThreads && count >= WorkAhead::kWindow
            ? std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, 4)
            : 1;
    std::vector<std::atomic<int>> made(count);
    std::vector<std::size_t> begun(count);
    std::size_t begins = 0;
    std::atomic<std::size_t> shown = 0;
    std::atomic<std::size_t> makes = 0;
    std::atomic<std::size_t> most = 0;
    WorkAhead ahead(count, {[&](std::size_t index) { begun[index] = begins++; },
                            [&, size = bytes](std::size_t worker, std::size_t index) {
                                EXPECT_LT(worker, threads);
                                ++made[index];
                                const std::size_t now = ++makes - shown;
                                most = std::max<std::size_t>(most, now);
                                return size;
                            }});
    {
        std::optional<NoThreads> none;
        if (!hasThreads) {
            none.emplace();
        }
        ahead.Start();
    }
    for (std::size_t index = 0; index < last; ++index) {
        const bool isMade = ahead.Reach(index);
        EXPECT_EQ(made[index], isMade ? 1 : 0);
        makes += isMade ? 0 : 1;
        EXPECT_EQ(begun[index], index);
        ++shown;
    }
    EXPECT_LE(most, threads == 1 ? 0 : std::min(threads + mostAhead, WorkAhead::kWindow));
}

INSTANTIATE_TEST_SUITE_P(Sizes, WorkAheadTest,
                         ::testing::Values(Case{"Small", 1000, WorkAhead::kWindow},
                                           Case{"OneIsTooMuch", std::size_t{5} << 20U, 0},
                                           Case{"TwoAreTooMuch", std::size_t{3} << 20U, 1},
                                           Case{"NoThreads", 1000, 0, false},
                                           Case{"Few", 1000, 0, true, 31},
                                           Case{"FewOfMany", 1, WorkAhead::kWindow, true, 300, 1}),
                         [](const auto& each) { return each.param.name; });

} // namespace
} // namespace nqp2::tool
