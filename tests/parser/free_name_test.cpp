// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/parser/card_test.h"
#include "tests/support/faulty_file_system.h"

namespace nqp2::parser {
namespace {

/// Every candidate in order, written out the long way.
std::vector<std::string> Candidates() {
    std::vector<std::string> names;
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        names.push_back(std::string("0001A") + letter);
    }
    for (char letter = 'B'; letter <= 'Z'; ++letter) {
        names.push_back(std::string("0001") + letter + "Z");
    }
    for (char digit = '2'; digit <= '9'; ++digit) {
        names.push_back(std::string("000") + digit + "ZZ");
    }
    for (char digit = '1'; digit <= '9'; ++digit) {
        names.push_back(std::string("00") + digit + "9ZZ");
    }
    return names;
}

class FreeNameTest : public CardTest {
protected:
    void ExpectFree(const std::string& name, __int64 tried) {
        CString found;
        __int64 count = 0;
        EXPECT_EQ(m_parser.CheckName(found, m_card.Root(), count), 1);
        EXPECT_EQ(platform::Utf8FromText(found.View()), name);
        EXPECT_EQ(count, tried);
    }
};

TEST_F(FreeNameTest, CandidatesFollowEachOtherWithoutCarryAndEndAfter68) {
    const std::vector<std::string> names = Candidates();
    ASSERT_EQ(names.size(), 68U);
    ASSERT_EQ(names.back(), "0099ZZ");
    __int64 tried = 0;
    for (const std::string& name : names) {
        ExpectFree(name, ++tried);
        m_card.AddFile("VIDEO/" + name + ".MXF");
    }
    CString untouched = L"mine";
    EXPECT_EQ(m_parser.CheckName(untouched, m_card.Root(), tried), 0);
    EXPECT_EQ(m_parser.CheckName(untouched, m_card.Root()), 0);
    EXPECT_EQ(untouched, L"mine");
    EXPECT_EQ(tried, 68);
}

TEST_F(FreeNameTest, NoNameIsFreeInAFolderThatCannotBeRead) {
    m_card.AddFile("VIDEO/0001AA.MXF");
    test::FaultyFileSystem files;
    files.Fail({.error = platform::IoError::Denied, .operation = test::Operation::List});
    const platform::ScopedFileSystem inUse(files);
    CString untouched = L"mine";
    EXPECT_EQ(m_parser.CheckName(untouched, m_card.Root()), 0);
    EXPECT_EQ(untouched, L"mine");
}

TEST_F(FreeNameTest, OnlyVideoFilesTakeANameInAnyLetterCase) {
    m_card.AddClip("0001AA");
    m_card.AddFile("AUDIO/0001AA00.MXF");
    ExpectFree("0001AA", 1);
    m_card.AddFile("VIDEO/0001aa.mxf");
    ExpectFree("0001AB", 2);
}

TEST_F(FreeNameTest, AnEmptyOrAbsentCardTakesNone) {
    CString name;
    EXPECT_EQ(m_parser.CheckName(name, L"/nonexistent"), 1);
    EXPECT_EQ(name, L"0001AA");
    const test::CardBuilder noCard(false);
    name.Empty();
    EXPECT_EQ(m_parser.CheckName(name, noCard.Root()), 1);
    EXPECT_EQ(name, L"0001AA");
}

} // namespace
} // namespace nqp2::parser
