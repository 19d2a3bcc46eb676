// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/selection_rule.h"

#include "tests/xml/dom/loaded_document.h"

namespace nqp2::dom {
namespace {

using Bindings = std::vector<std::pair<std::string, std::string>>;

TEST(ParseBindings, ReadsAListOfDeclarationsAndNothingElse) {
    struct {
        const char* text;
        std::optional<Bindings> bindings;
    } const table[] = {
        {"", Bindings{}},
        {" \t\r\n", Bindings{}},
        {"xmlns:p='u'", Bindings{{"p", "u"}}},
        {" xmlns:p=\"it's\" \n xmlns:q='\"' ", Bindings{{"p", "it's"}, {"q", "\""}}},
        {"xmlns='u' xmlns:p='v'", Bindings{{"p", "v"}}},
        {"xmlns:p=''", Bindings{{"p", ""}}},
        {"xmlns:p=u", std::nullopt},
        {"xmlns:p='u", std::nullopt},
        {"xmlns:p=", std::nullopt},
        {"xmlns:p", std::nullopt},
        {"xmlns:='u'", std::nullopt},
        {"xmlnsp='u'", std::nullopt},
        {"xml:lang='en'", std::nullopt},
        {"xmlns:p='u' x='1'", std::nullopt},
        {"xmlns:p='u' x", std::nullopt},
        {"xmlns:p q='u'", std::nullopt},
    };
    for (const auto& row : table) {
        EXPECT_EQ(ParseBindings(row.text), row.bindings) << row.text;
    }
}

TEST(SelectionNamespaces, BadTextClearsTheBindings) {
    LoadedDocument document("<p:a xmlns:p='u'/>", SelectionRule::Names::Namespace);
    ASSERT_TRUE(document.SetSelectionNamespaces("xmlns:x='u'"));
    EXPECT_NE(document.SelectSingle("x:a"), nullptr);
    ASSERT_TRUE(document.LoadText("<q:a xmlns:q='u'/>"));
    EXPECT_NE(document.SelectSingle("x:a"), nullptr) << "bindings outlive a load";
    EXPECT_FALSE(document.SetSelectionNamespaces("xmlns:x=###"));
    EXPECT_ANY_THROW(static_cast<void>(document.SelectSingle("x:a")));
}

} // namespace
} // namespace nqp2::dom
