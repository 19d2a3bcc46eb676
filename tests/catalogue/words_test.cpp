// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/medium.h"
#include "catalogue/search_words.h"
#include "catalogue/sqlite/sqlite_dialect.h"
#include "catalogue/words.h"
#include "console/console.h"

#include <gmock/gmock.h>
#include <string>

namespace nqp2::catalogue {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

TEST(Words, AreLettersAndDigitsWithoutRegardToCase) {
    EXPECT_THAT(WordsOf("0001AB, take-2; a/b"), ElementsAre("0001AB", "TAKE", "2", "A", "B"));
    EXPECT_EQ(WordsOf("K\u00f6ln \u00d6"), WordsOf("k\u00d6LN, \u00f6"));
    EXPECT_THAT(WordsOf("\u6771\u4eac \u30ab"), ElementsAre("\u6771", "\u4eac", "\u30ab"));
    EXPECT_THAT(WordsOf(" \u2026\u3000\u00b7\t'"), ElementsAre());
    EXPECT_EQ(WordsOf(std::string(5000, 'x')).front().size(), 100U);
}

/// What engines are asked for must not be able to be anything but words.
TEST(Words, HoldNoSignOfAnyQueryWhateverTheyAreMadeOf) {
    for (int byte = 1; byte < 256; ++byte) {
        for (const std::string& word : WordsOf("a" + std::string(2, static_cast<char>(byte)))) {
            EXPECT_EQ(word.find_first_of(" \"'\\*&|!():<>-\t\n"), std::string::npos) << byte;
        }
    }
}

TEST(SearchWords, AreReadAsTheUserMeansThem) {
    const WordQuery query = ReadSearchWords("one \"two three\" -four fi* \"six sev\"* Jean-Luc");
    ASSERT_EQ(query.size(), 6U);
    EXPECT_EQ(kSqliteDialect.queryText(query),
              "\"ONE \" AND \"TWO THREE \" AND \"FI \" * AND \"SIX SEV \" * AND \"JEAN LUC \""
              " NOT \"FOUR \"");
    for (const char* const text : {"\"open", "x \"", "-", "*", "\"\"", "-\"a", "\u2026"}) {
        EXPECT_THROW(ReadSearchWords(text), tool::Failure) << text;
    }
    EXPECT_TRUE(ReadSearchWords(" \t").empty());
}

TEST(KeptText, IsUtf8WithoutZerosAndBounded) {
    EXPECT_EQ(KeptText(std::string_view("a\0b\xFFz\xC3", 6)), "ab\uFFFDz\uFFFD");
    EXPECT_LE(KeptText(std::string(1'000'000, 'x')).size(), 64U * 1024U);
}

TEST(StoredPath, HoldsEveryByteAndGivesItBack) {
    std::string path = "/a%41%";
    for (int byte = 1; byte < 256; ++byte) {
        path += static_cast<char>(byte);
    }
    const std::string stored = StoredPath(path);
    EXPECT_EQ(KeptText(stored), stored);
    EXPECT_THAT(stored, Not(HasSubstr("\n")));
    EXPECT_EQ(PathOfStored(stored), path);
}

} // namespace
} // namespace nqp2::catalogue
