// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/field_reader.h"

#include <gtest/gtest.h>
#include <string>

namespace nqp2::dom {
namespace {

const FieldSet& Wanted() {
    static constexpr std::string_view kCells[] = {"n", "t"};
    static constexpr FieldSet::ValuePath kValues[] = {{"a", "k"}, {"b/c"}, {"l/v"}};
    static constexpr FieldSet::ListPath kLists[] = {{"l", {}}, {"m", kCells}};
    static const FieldSet wanted("//R/C", kValues, kLists);
    return wanted;
}

/// "-" for what is not taken.
std::string Shown(FieldReader& reader, const std::string& document) {
    if (!reader.Read(document)) {
        return "-";
    }
    const FieldValues& values = reader.Values();
    std::string shown = values.hasBase ? "C" : "no C";
    for (const FieldValues::Value& each : values.values) {
        shown.append("|").append(each.isThere ? each.text : "none").append(each.attribute);
    }
    shown.append("|").append(std::to_string(values.lists[0].count));
    for (const FieldValues::Value& each : values.lists[1].cells) {
        shown.append(",").append(each.text);
    }
    return shown;
}

TEST(FieldReader, ReadsTheSameWhateverItHasLearned) {
    const std::string plain = "<R><C><a k=\"K\">A</a><b><c>B</c></b><x>1</x><x>2</x></C></R>";
    const struct {
        std::string content; ///< of the root
        const char* shown;
    } rows[] = {
        {plain.substr(3, plain.size() - 7), "C|AK|B|none|0"},
        {"<C><a k=\"K\">&lt;\r\n</a><b><c>\u00e4</c></b><x>1</x></C>", "C|<\nK|\u00e4|none|0"},
        {"<C><a k=\"K\"></a><b><c> </c></b><x>1</x><x></x></C>", "C|K| |none|0"},
        {"<C><a p:k=\"&gt;\" xmlns:p=\"u\"/></C>", "-"},
        {"<C><b xmlns=\"u\"><c>B</c></b><b><c>other</c></b><a/></C>", "C||B|none|0"},
        {"<C><l/><l><v>V</v></l><m><t>T</t><n>N</n><t>U</t></m><m/></C>", "C|none|none|V|2,N,T,,"},
        {"<x>1</x><C><a k=\"K\">A</a><!-- c --></C>", "C|AK|none|none|0"},
        {"", "no C|none|none|none|0"},
        {"<C><a k=\"K\">A</a></C><C/>", "-"},
        {"<C><x><R/></x></C>", "-"},
        {"<C><a>A<!-- c -->B</a></C>", "-"},
        {"<C><a>A<x/></a></C>", "-"},
        {"<C><a><![CDATA[A]]></a></C>", "-"},
        {"<C><a k=\"K\">A</a><b><c>B</c></b><x>1</x><x>2</x></R>", "-"},
        {"<C><a k=\"K\">A</a><b><c>B</c></b><x>]]></x></C>", "-"},
    };
    FieldReader all(Wanted());
    for (const auto& row : rows) {
        const std::string document = "<R>" + row.content + "</R>\n";
        SCOPED_TRACE(document);
        FieldReader alone(Wanted());
        EXPECT_EQ(Shown(alone, document), row.shown);
        for (const std::string& each : {document, document, plain, document}) {
            EXPECT_EQ(Shown(all, each), each == plain ? "C|AK|B|none|0" : row.shown);
        }
    }
    EXPECT_EQ(Shown(all, plain + "<R/>"), "-");
}

} // namespace
} // namespace nqp2::dom
