// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT
//
// Whatever allocation fails, alone or with all that follow: the program ends by itself and says
// why, no file has its name in a copy that is not the card's, and what it calls done is done.
// NQP2_ALLOCATIONS=all takes every allocation; some of each command are the default.

#include "offload/mhl/hash_format.h"
#include "offload/program.h"
#include "tests/offload/run_fixture.h"
#include "tests/support/failing_memory.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <sys/mman.h>
#include <vector>

namespace nqp2::test {
namespace {

using namespace memory; // NOLINT(google-build-using-namespace)

std::string BytesOf(const std::filesystem::path& path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

class OutOfMemory : public testing::Test {
protected:
    /// The cryptographic library does not survive a single failure while it starts.
    OutOfMemory() { static_cast<void>(mhl::Hasher(mhl::HashFormat::C4)); }

    struct Ended {
        int status;
        std::string told;
        long allocations;
    };

    /// The program, in a process of its own.
    Ended RunWithout(long number, bool andAllThatFollow, const std::vector<std::string>& words) {
        const std::string told = m_run.folder.Path("told");
        std::vector<const char*> arguments = {"nqp2-offload"};
        for (const std::string& word : words) {
            arguments.push_back(word.c_str());
        }
        const int status = RunInChild([&] {
            std::freopen("/dev/null", "w", stdout);
            std::freopen(told.c_str(), "w", stderr);
            failing = number;
            allFollowingFail = andAllThatFollow;
            allocationsMade = 0;
            isCounting = true;
            const int result =
                offload::RunProgram(static_cast<int>(arguments.size()), arguments.data());
            isCounting = false;
            *m_count = allocationsMade;
            std::fflush(nullptr);
            return result;
        });
        return {status, BytesOf(told), *m_count};
    }

    void Sweep(const std::vector<std::string>& words, const std::function<void()>& prepare,
               const std::function<void(const Ended&)>& check) {
        prepare();
        const Ended whole = RunWithout(0, false, words);
        ASSERT_EQ(whole.status, 0) << whole.told;
#ifdef NQP2_MEMORY_IS_INSTRUMENTED
        GTEST_SKIP() << "a sanitizer has taken the place of malloc";
#endif
        ASSERT_GT(whole.allocations, 100);
        constexpr long kSampled = 30;
        const bool isEach = std::getenv("NQP2_ALLOCATIONS") != nullptr;
        const long step = isEach ? 1 : std::max(whole.allocations / kSampled, 1L);
        for (const bool andAllThatFollow : {false, true}) {
            for (long number = 1; number <= whole.allocations; number += step) {
                SCOPED_TRACE(words.front() + ": allocation " + std::to_string(number) + " of " +
                             std::to_string(whole.allocations) +
                             (andAllThatFollow ? " and all that follow" : ""));
                prepare();
                const Ended ended = RunWithout(number, andAllThatFollow, words);
                EXPECT_TRUE(ended.status == 0 || ended.status == 1) << ended.status << ended.told;
                // A verification tells among its findings what it could not look at.
                EXPECT_TRUE(ended.status == 0 || words.front() == "verify" ||
                            ended.told.starts_with("nqp2: "))
                    << ended.told;
                check(ended);
            }
        }
    }

    /// Every file with its name is the card's.
    void ExpectNothingHalf() const {
        const std::filesystem::path copy = m_run.folder.Path("one/A001");
        if (!std::filesystem::exists(copy)) {
            return;
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(copy)) {
            const auto below = entry.path().lexically_relative(copy);
            const bool isOurs = *below.begin() == "ascmhl" ||
                                entry.path().filename().string().starts_with(".nqp2-");
            EXPECT_TRUE(isOurs || entry.is_directory() ||
                        BytesOf(entry.path()) ==
                            BytesOf(std::filesystem::path(m_run.folder.Path("card")) / below))
                << below;
        }
    }

    RunFixture m_run;
    long* m_count = static_cast<long*>(
        mmap(nullptr, sizeof(long), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
};

TEST_F(OutOfMemory, AnOffloadEndsAndLeavesNothingHalf) {
    Sweep(
        {"offload", "card=" + m_run.arguments.card, "to=" + m_run.folder.Path("one"), "name=A001",
         "progress=none"},
        [&] {
            std::filesystem::remove_all(m_run.folder.Path("one"));
            m_run.folder.MakeFolder("one");
        },
        [&](const Ended& ended) {
            ExpectNothingHalf();
            EXPECT_TRUE(ended.status != 0 || m_run.IsSound("one"));
        });
}

TEST_F(OutOfMemory, ASealIsAWholeOneOrNone) {
    const std::string lists = m_run.folder.Path("card/ascmhl");
    Sweep(
        {"seal", "folder=" + m_run.arguments.card, "progress=none"},
        [&] { std::filesystem::remove_all(lists); },
        [&](const Ended& ended) {
            const bool hasChain = std::filesystem::exists(lists + "/ascmhl_chain.xml");
            EXPECT_TRUE(hasChain || ended.status != 0);
            EXPECT_TRUE(
                !hasChain ||
                RunWithout(0, false, {"verify", "folder=" + m_run.arguments.card, "progress=none"})
                        .status == 0);
        });
}

TEST_F(OutOfMemory, AVerificationSaysNothingWrong) {
    const std::vector<std::string> words = {"verify", "folder=" + m_run.arguments.card,
                                            "progress=none"};
    ASSERT_EQ(RunWithout(0, false, {"seal", words[1], words[2]}).status, 0);
    Sweep(
        words, [] {}, [](const Ended&) {});
    m_run.folder.Write("card/LASTCLIP.TXT", "0001AC\n");
    for (long number = 1; number < 2000; number += 50) {
        EXPECT_EQ(RunWithout(number, false, words).status, 1);
    }
}

} // namespace
} // namespace nqp2::test
