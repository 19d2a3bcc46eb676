// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/run_progress.h"

#include "console/byte_size.h"

#include <gtest/gtest.h>

#include <string>

namespace nqp2::tool {
namespace {

std::string Shown(ProgressForm form) {
    testing::internal::CaptureStderr();
    RunProgress progress(form);
    progress.Begin("copy", 4, 4096);
    for (int i = 0; i < 1000; ++i) {
        progress.Show({1024, 1, "A\x1b/B", "T"});
    }
    progress.Fail("A/B", "T", "no \"space\"");
    progress.End({4096, 4, "", ""});
    return testing::internal::GetCapturedStderr();
}

TEST(RunProgress, TellsLittleOfManyStepsAndEveryFailure) {
    const std::string bar = Shown(ProgressForm::Bar);
    EXPECT_NE(bar.find("copy T [="), std::string::npos) << bar;
    EXPECT_LT(bar.size(), 500U);
    EXPECT_EQ(bar.find('\n'), bar.size() - 1) << "the failure alone";
    EXPECT_EQ(Shown(ProgressForm::None), "nqp2: T: A/B: no \"space\"\n");
    const std::string lines = Shown(ProgressForm::Lines);
    EXPECT_TRUE(lines.starts_with("nqp2: T: A/B: no")) << lines;
    EXPECT_NE(lines.find("copy: 100 % of 4 files, 4.0 KiB in 0:00, "), std::string::npos) << lines;
    const std::string objects = Shown(ProgressForm::Json);
    EXPECT_NE(objects.find(R"({"phase":"copy","file":"A\u001b/B","files":1,)"), std::string::npos)
        << objects;
    EXPECT_NE(objects.find(R"("target":"T","failure":"no \"space\""})"), std::string::npos)
        << objects;
}

TEST(RunProgress, SizesHaveTheUnitThatFits) {
    const std::pair<std::uint64_t, const char*> cases[] = {{0, "0 bytes"},
                                                           {1023, "1023 bytes"},
                                                           {1024, "1.0 KiB"},
                                                           {1536 << 10, "1.5 MiB"},
                                                           {~std::uint64_t{0}, "16.0 EiB"}};
    for (const auto& [bytes, text] : cases) {
        EXPECT_EQ(BytesText(bytes), text);
    }
}

} // namespace
} // namespace nqp2::tool
