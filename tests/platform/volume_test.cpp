// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/volume.h"
#include "tests/support/temp_folder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace nqp2::platform {
namespace {

TEST(Volume, HasTheNameThatLeadsToItsDevice) {
    const test::TempFolder folder;
    const std::string names = folder.MakeFolder("names");
    const std::string card = folder.MakeFolder("card/CONTENTS");
    struct stat facts = {};
    ASSERT_EQ(stat(card.c_str(), &facts), 0);
    if (mknod(folder.Path("other").c_str(), S_IFBLK | 0600, facts.st_dev + 1) != 0 ||
        mknod(folder.Path("letters").c_str(), S_IFCHR | 0600, facts.st_dev) != 0 ||
        mknod(folder.Path("device").c_str(), S_IFBLK | 0600, facts.st_dev) != 0) {
        GTEST_SKIP() << "no device can be made here";
    }
    for (const char* const name : {"other", "letters", "gone"}) {
        std::filesystem::create_symlink(folder.Path(name), names + '/' + name);
    }
    EXPECT_EQ(VolumeName(card, names), "");
    std::filesystem::create_symlink(folder.Path("device"), names + "/NO\\x20NAME\\x2f\\x2");
    EXPECT_EQ(VolumeName(card, names), "NO NAME/\\x2");
    EXPECT_EQ(VolumeName(card + "/gone", names), "");
    EXPECT_EQ(VolumeName(card, folder.Path("gone")), "");
}

} // namespace
} // namespace nqp2::platform
