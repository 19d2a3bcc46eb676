// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "edl/edl_name.h"

#include "tests/edl/edl_test.h"
#include "tests/support/faulty_file_system.h"

namespace nqp2::edl {
namespace {

using Peer = parser::NQP2ParserPeer;

class EdlNameTest : public EdlTest {
protected:
    EdlNameTest() { m_card.Folder().MakeFolder("EDITLIST"); }

    /// The new name, or "full".
    std::string NewName(const CString& id = L"AB") {
        CString name = L"untouched";
        const bool found = Peer::GetNewEdlName(m_parser, m_card.Root(), id, name) == 0;
        EXPECT_TRUE(found || name == L"untouched") << name;
        return found ? platform::Utf8FromText(name.View()) : "full";
    }
    void AddNumbers(int first, int last) const {
        for (int number = first; number <= last; ++number) {
            char name[16];
            std::snprintf(name, sizeof name, "P%03dXY.XML", number);
            AddFile(name, "");
        }
    }
};

TEST_F(EdlNameTest, TheSuffixIsTheFirstTwoThatAreNoDigits) {
    const std::pair<const wchar_t*, const char*> rows[] = {
        {L"AB", "P001AB.XML"},
        {L"060a2b34", "P001AB.XML"},
        {L"0123456789", "P001.XML"},
        {L"", "P001.XML"},
        {L"1x2", "P001X.XML"},
        {L"12-34-56", "P001--.XML"},
        {L"00\u00E9q", "P001\u00C9Q.XML"},
    };
    for (const auto& [id, name] : rows) {
        EXPECT_EQ(NewName(id), name);
    }
}

TEST_F(EdlNameTest, AFolderThatIsMissingOrCannotBeListedGivesNoNumber) {
    AddNumbers(1, 5);
    test::FaultyFileSystem files;
    files.Fail({.error = platform::IoError::Device,
                .operation = test::Operation::List,
                .pathPart = "EDITLIST",
                .keptEntries = 2});
    {
        const platform::ScopedFileSystem inUse(files);
        EXPECT_EQ(NewName(), "full");
    }
    std::filesystem::remove_all(m_card.Folder().Path("EDITLIST"));
    EXPECT_EQ(NewName(), "full");
}

TEST_F(EdlNameTest, TheNumberFollowsTheLargest) {
    AddFile("P001AB.XML", "");
    EXPECT_EQ(NewName(L"EF"), "P002EF.XML");
    AddFile("P007CD.XML", "");
    EXPECT_EQ(NewName(L"EF"), "P008EF.XML");
    AddFile("x041.xml", ""); // whatever letter stands in front
    AddFile("PP99.XML", "");
    AddFile("P-50.XML", "");
    AddFile("P900.TXT", "");
    m_card.Folder().MakeFolder("EDITLIST/P800AB.XML");
    EXPECT_EQ(NewName(L"EF"), "P042EF.XML");
    AddFile("P998AB.XML", "");
    EXPECT_EQ(NewName(L"EF"), "P999EF.XML");
}

TEST_F(EdlNameTest, Behind999TheLowestGapIsTaken) {
    AddFile("P999AB.XML", "");
    EXPECT_EQ(NewName(), "P001AB.XML");
    AddNumbers(1, 3);
    AddFile("xP004.XML", "");  // anywhere in the title
    AddFile("p005ab.XML", ""); // letter case counts
    EXPECT_EQ(NewName(), "P005AB.XML");
    AddFile("P99999999999.XML", "");
    EXPECT_EQ(NewName(), "P005AB.XML");
}

TEST_F(EdlNameTest, AFolderOf999IsFullAndOneOfMoreGoesOnAbove) {
    AddNumbers(1, 998);
    EXPECT_EQ(NewName(), "P999AB.XML");
    AddNumbers(1000, 1000);
    EXPECT_EQ(NewName(), "full");
    AddNumbers(999, 999);
    EXPECT_EQ(NewName(), "P1001AB.XML");
    AddFile("P99999999999.XML", "");
    EXPECT_EQ(NewName(), "P2147483648AB.XML");
}

TEST_F(EdlNameTest, ANumberIsTakenWhenATitleHoldsIt) {
    AddFile("P007AB.XML", "");
    AddFile("p008AB.XML", "");
    AddFile("xP0091.xml", "");
    AddFile("P010.TXT", "");
    m_card.Folder().MakeFolder("EDITLIST/P011.XML");
    AddFile("P1234.XML", "");
    const std::pair<int, int> rows[] = {{7, 1},  {8, 0},    {9, 1},  {10, 0},
                                        {11, 0}, {1234, 1}, {123, 1}};
    const CString pattern = m_card.Root() + L"\\EDITLIST\\*.XML";
    for (const auto& [number, taken] : rows) {
        EXPECT_EQ(Peer::CheckEdlSerialNumber(m_parser, number, pattern), taken) << number;
    }
    EXPECT_EQ(Peer::CheckEdlSerialNumber(m_parser, 7, m_card.Root() + L"\\NONE\\*.XML"), 0);
}

} // namespace
} // namespace nqp2::edl
