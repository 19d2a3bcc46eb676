// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/metadata_ahead.h"

#include <atomic>
#include <cstddef>
#include <gtest/gtest.h>
#include <optional>
#include <ostream>
#include <pthread.h>
#include <string>
#include <vector>

namespace nqp2::tool {
namespace {

struct Case {
    std::string name;
    std::size_t bytes;              ///< that the metadata of each clip take
    std::size_t mostAhead;          ///< clips that may be read and not yet shown
    std::vector<std::size_t> asked; ///< instead of one after the other
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

class MetadataAheadTest : public ::testing::TestWithParam<Case> {};

TEST_P(MetadataAheadTest, TellsOfEachClipWhatWasReadOfIt) {
    constexpr std::size_t kClips = 300;
    const std::vector<_tag_P2Clip> clips(kClips);
    std::atomic<std::size_t> shown = 0;
    std::atomic<std::size_t> reads = 0;
    std::atomic<bool> isTooFar = false;
    MetadataAhead ahead([&](const _tag_P2Clip& clip, ReadMetadata& read) {
        read.problem.Format(L"%d", static_cast<int>(&clip - clips.data()));
        read.metadata.memos.SetSize(1);
        isTooFar = isTooFar || ++reads - shown > GetParam().mostAhead;
        return GetParam().bytes;
    });
    ClipOrder order;
    for (const _tag_P2Clip& clip : clips) {
        order.push_back(&clip);
    }
    {
        std::optional<NoThreads> none;
        if (GetParam().mostAhead == 1) {
            none.emplace();
        }
        ahead.Begin(order);
    }
    std::vector<std::size_t> asked = GetParam().asked;
    for (std::size_t i = 0; GetParam().asked.empty() && i < kClips; ++i) {
        asked.push_back(i);
    }
    for (const std::size_t index : asked) {
        const ReadMetadata& read = ahead.Of(clips[index]);
        EXPECT_EQ(read.problem, std::to_wstring(index).c_str());
        EXPECT_EQ(read.metadata.memos.GetSize(), 1);
        ++shown;
    }
    EXPECT_FALSE(isTooFar);
}

INSTANTIATE_TEST_SUITE_P(Sizes, MetadataAheadTest,
                         ::testing::Values(Case{"Small", 1000, 33, {}},
                                           Case{"OneIsTooMuch", std::size_t{5} << 20U, 2, {}},
                                           Case{"TwoAreTooMuch", std::size_t{3} << 20U, 3, {}},
                                           Case{"OutOfOrder", 1000, 33, {0, 1, 1, 7, 2, 299}},
                                           Case{"BeyondTheEnd", 1000, 33, {299, 299, 0}},
                                           Case{"NoThreads", 1000, 1, {}},
                                           Case{"FewOfMany", 1, 33, {0}}),
                         [](const auto& each) { return each.param.name; });

} // namespace
} // namespace nqp2::tool
