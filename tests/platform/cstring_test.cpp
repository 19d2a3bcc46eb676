// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/CString.h"

#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <climits>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

TEST(CStringTest, EmptyTextsAreZeroTerminatedAndAllocateNothing) {
    const wchar_t* const null = nullptr;
    const CString empties[] = {
        CString(),         CString(null),          CString(L""),
        CString(null, 5),  CString(L"abc", 0),     CString(L"abc", -1),
        CString(L'x', -3), CString(L"abc").Mid(3), CString(std::wstring_view())};
    for (const CString& text : empties) {
        EXPECT_EQ(text.GetString(), CString().GetString());
        EXPECT_STREQ(text.GetString(), L"");
        EXPECT_EQ(text.GetLength(), 0);
        EXPECT_TRUE(text.IsEmpty());
    }
}

TEST(CStringTest, CopySharesUntilOneSideChanges) {
    const CString original(L"P2 card");
    using Change = void (*)(CString&);
    const Change changes[] = {
        [](CString& text) { text += L'!'; },
        [](CString& text) { text.SetAt(0, L'Q'); },
        [](CString& text) { text.MakeUpper(); },
        [](CString& text) { text.Remove(L'a'); },
        [](CString& text) { text.Replace(L"P2", L"SD"); },
        [](CString& text) { text.GetBuffer(3)[0] = L'Q'; },
        [](CString& text) { text.Empty(); },
    };
    for (const Change change : changes) {
        CString copy = original;
        EXPECT_EQ(copy.GetString(), original.GetString());
        change(copy);
        EXPECT_NE(copy, original);
        EXPECT_STREQ(original.GetString(), L"P2 card");
    }
}

TEST(CStringTest, MovedFromTextIsEmptyAndUsable) {
    CString source(L"text");
    CString target(L"old");
    target = std::move(source);
    EXPECT_EQ(target, L"text");
    EXPECT_TRUE(source.IsEmpty()); // NOLINT(bugprone-use-after-move): what is tested
    source += L"new";
    EXPECT_EQ(source, L"new");

    CString& same = target;
    target = std::move(same);
    EXPECT_EQ(target, L"text");
}

TEST(CStringTest, PartsOfTheTextItselfMayBeAssignedAndAppended) {
    CString text(L"abcdef");
    const CString& same = text;
    text = same;
    EXPECT_EQ(text, L"abcdef");
    text += text.GetString() + 3;
    EXPECT_EQ(text, L"abcdefdef");
    text.GetBuffer(100); // room for appending in place
    text += text;
    EXPECT_EQ(text, L"abcdefdefabcdefdef");
    text = text.GetString() + 6;
    EXPECT_EQ(text, L"defabcdefdef");
    text = text.Mid(1, 4);
    EXPECT_EQ(text, L"efab");
    text.Replace(text, text.GetString() + 2);
    EXPECT_EQ(text, L"ab");
}

TEST(CStringTest, GrowsElementByElement) {
    CString text;
    std::wstring expected;
    for (int i = 0; i < 1000; ++i) {
        const auto ch = static_cast<wchar_t>(L'a' + i % 26);
        text += ch;
        expected += ch;
    }
    EXPECT_EQ(text.View(), expected);
    EXPECT_EQ(text.GetString()[1000], L'\0');
}

TEST(CStringTest, KeepsElementsThatAreZero) {
    const CString text(L"a\0b", 3);
    EXPECT_EQ(text.GetLength(), 3);
    EXPECT_EQ(text + text, CString(L"a\0ba\0b", 6));
    EXPECT_NE(text, L"a");
    EXPECT_EQ(text.Find(L'b'), 2);
}

TEST(CStringTest, GivesZeroForElementsOutsideTheText) {
    CString text(L"ab");
    EXPECT_EQ(text[0], L'a');
    EXPECT_EQ(text[1], L'b');
    for (const int outside : {2, 3, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(text[outside], L'\0');
        text.SetAt(outside, L'x');
    }
    EXPECT_EQ(text, L"ab");
}

TEST(CStringTest, ClampsPartsToTheText) {
    const CString text(L"clip");
    const struct {
        CString part;
        const wchar_t* expected;
    } cases[] = {
        {text.Left(2), L"cl"},
        {text.Left(9), L"clip"},
        {text.Left(-1), L""},
        {text.Left(INT_MIN), L""},
        {text.Right(2), L"ip"},
        {text.Right(9), L"clip"},
        {text.Right(-1), L""},
        {text.Mid(1), L"lip"},
        {text.Mid(4), L""},
        {text.Mid(9), L""},
        {text.Mid(-1), L"clip"},
        {text.Mid(1, 2), L"li"},
        {text.Mid(1, INT_MAX), L"lip"},
        {text.Mid(1, -1), L""},
        {text.Mid(-5, 2), L"cl"},
        {text.Mid(INT_MAX, INT_MAX), L""},
        {text.Mid(INT_MIN, 3), L"cli"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(row.part, row.expected);
    }
}

TEST(CStringTest, FindsPartsAndElements) {
    const CString text(L"aXbXc");
    EXPECT_EQ(text.Find(L"Xb"), 1);
    EXPECT_EQ(text.Find(L"X", 2), 3);
    EXPECT_EQ(text.Find(L"x"), -1);
    EXPECT_EQ(text.Find(L"X", 4), -1);
    EXPECT_EQ(text.Find(L"X", -7), 1);
    EXPECT_EQ(text.Find(L'X', 2), 3);
    EXPECT_EQ(text.Find(L'X', INT_MAX), -1);
    EXPECT_EQ(text.Find(L"", 5), 5) << "an empty part is found also at the end";
    EXPECT_EQ(text.Find(L"", 6), -1);
    EXPECT_EQ(text.ReverseFind(L'X'), 3);
    EXPECT_EQ(text.ReverseFind(L'z'), -1);
    EXPECT_EQ(CString().ReverseFind(L'X'), -1);
}

TEST(CStringTest, ComparesWithAndWithoutCase) {
    const struct {
        const wchar_t* left;
        const wchar_t* right;
        int exact;
        int noCase;
    } cases[] = {
        {L"abc", L"abc", 0, 0},   {L"abc", L"ABC", 1, 0},       {L"abc", L"abd", -1, -1},
        {L"abc", L"ABCD", 1, -1}, {L"abc", L"ab", 1, 1},        {L"", L"", 0, 0},
        {L"", L"a", -1, -1},      {L"\u00E4", L"\u00C4", 1, 0}, {L"a", nullptr, 1, 1},
        {L"a_", L"AB", 1, 1},
    };
    const auto sign = [](int value) { return (value > 0) - (value < 0); };
    for (const auto& row : cases) {
        const CString left(row.left);
        EXPECT_EQ(sign(left.Compare(row.right)), row.exact) << left;
        EXPECT_EQ(sign(left.CompareNoCase(row.right)), row.noCase) << left;
    }
}

TEST(CStringTest, ChangesCaseBeyondAscii) {
    CString text(L"clip \u00E4\u03B1\u0434 01");
    EXPECT_EQ(text.MakeUpper(), L"CLIP \u00C4\u0391\u0414 01");
    EXPECT_EQ(text.MakeLower(), L"clip \u00E4\u03B1\u0434 01");
    EXPECT_EQ(CString().MakeUpper(), L"");
}

TEST(CStringTest, TrimsAsciiWhiteSpaceOnly) {
    const CString text(L" \t\r\n\v\f a b\u00A0 \n");
    CString both = text;
    CString left = text;
    CString right = text;
    EXPECT_EQ(both.Trim(), L"a b\u00A0");
    EXPECT_EQ(left.TrimLeft(), L"a b\u00A0 \n");
    EXPECT_EQ(right.TrimRight(), L" \t\r\n\v\f a b\u00A0");
    EXPECT_EQ(CString(L" \t ").Trim(), L"");
    EXPECT_EQ(CString(L"a").Trim(), L"a");
}

TEST(CStringTest, TrimsASetFromTheRight) {
    EXPECT_EQ(CString(L"E:\\a\\/\\").TrimRight(L"/\\"), L"E:\\a");
    EXPECT_EQ(CString(L"\\\\").TrimRight(L"\\"), L"");
    EXPECT_EQ(CString(L"a ").TrimRight(L""), L"a ");
    EXPECT_EQ(CString(L"a ").TrimRight(nullptr), L"a ");
}

TEST(CStringTest, ReplacesFromLeftToRight) {
    const struct {
        const wchar_t* text;
        const wchar_t* from;
        const wchar_t* to;
        int count;
        const wchar_t* expected;
    } cases[] = {
        {L"a/b/c", L"/", L"\\", 2, L"a\\b\\c"},
        {L"aaa", L"aa", L"b", 1, L"ba"},
        {L"aaa", L"a", L"aa", 3, L"aaaaaa"},
        {L"xaxax", L"a", L"", 2, L"xxx"},
        {L"abc", L"", L"x", 0, L"abc"},
        {L"abc", nullptr, L"x", 0, L"abc"},
        {L"abc", L"b", nullptr, 1, L"ac"},
        {L"", L"a", L"b", 0, L""},
        {L"aa", L"a", L"", 2, L""},
    };
    for (const auto& row : cases) {
        CString text(row.text);
        EXPECT_EQ(text.Replace(row.from, row.to), row.count) << row.expected;
        EXPECT_EQ(text, row.expected);
    }
}

TEST(CStringTest, RemovesOneElementEverywhere) {
    CString text(L"-a--b-");
    EXPECT_EQ(text.Remove(L'-'), 4);
    EXPECT_EQ(text, L"ab");
    EXPECT_EQ(text.Remove(L'-'), 0);
    EXPECT_EQ(CString(L"---").Remove(L'-'), 3);
}

TEST(CStringTest, BufferIsCutToWhatWasWritten) {
    CString text(L"ab");
    const CString copy = text;
    wchar_t* const buffer = text.GetBuffer(10);
    EXPECT_STREQ(buffer, L"ab");
    std::fill_n(buffer, 10, L'z');
    text.ReleaseBuffer(4);
    EXPECT_EQ(text, L"zzzz");
    EXPECT_EQ(copy, L"ab");
    text.ReleaseBuffer(-1);
    EXPECT_EQ(text, L"");
    text.ReleaseBuffer(INT_MAX);
    EXPECT_EQ(text.GetLength(), 10) << "never longer than the buffer";
}

TEST(CStringTest, RefusesTextsThatNoIntCanCount) {
    CString text(L'a', 1 << 16);
    const CString other(L'b', 1 << 16);
    EXPECT_THROW(text.Replace(L"a", other), std::length_error);
    EXPECT_EQ(text.GetLength(), 1 << 16);
    EXPECT_EQ(text[0], L'a');
}

TEST(CStringTest, CopiesMayBeUsedFromSeveralThreads) {
    const CString shared(L"shared text");
    const auto work = [&shared] {
        for (int i = 0; i < 2000; ++i) {
            CString copy = shared;
            const CString second = copy;
            copy += L'x';
            ASSERT_EQ(second, L"shared text");
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back(work);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(shared, L"shared text");
}

} // namespace
