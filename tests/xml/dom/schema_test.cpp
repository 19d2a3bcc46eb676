// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/schema.h"

#include "tests/support/temp_folder.h"
#include "tests/xml/dom/loaded_document.h"

#include <pthread.h>
#include <thread>

namespace nqp2::dom {
namespace {

constexpr std::uint32_t kInvalid = 0xC00CE225U;
constexpr std::uint32_t kNoGrammar = 0xC00CE224U;

std::string Schema(std::string_view body, std::string_view rootAttributes = {}) {
    std::string text = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' ";
    return text.append(rootAttributes).append(">").append(body).append("</xs:schema>");
}

const std::string kNumber = Schema("<xs:element name='r' type='xs:int'/>");

ParseError Validated(std::string_view document, const std::string& schema) {
    const LoadedDocument loaded(document, SelectionRule::Names::Namespace);
    return Validate(loaded.Top(), schema);
}

TEST(Schema, TellsDocumentsThatFitAndTakesOneSchemaFileWithoutNamespace) {
    const std::string element = "<xs:element name='r' type='xs:int'/>";
    const std::string fits = "<r>12</r>";
    const std::tuple<std::string, std::string, std::uint32_t> table[] = {
        {fits, kNumber, 0},
        {"<?xml version='1.0' encoding='UTF-16'?><r>12</r>", kNumber, 0},
        {"<r>x</r>", kNumber, kInvalid},
        {"<s>12</s>", kNumber, kInvalid},
        {"<r xmlns='u'>12</r>", kNumber, kInvalid},
        {"<r a='1'>12</r>", kNumber, kInvalid},
        {fits, "", kNoGrammar},
        {fits, "<r>", kNoGrammar},
        {fits, "<r/>", kNoGrammar},
        {fits, "<!DOCTYPE s [<!ENTITY e SYSTEM 'file:///etc/hostname'>]>" + kNumber, kNoGrammar},
        {fits, Schema("<xs:element name='r' type='none'/>"), kNoGrammar},
        {fits, Schema(element, "targetNamespace='u'"), kNoGrammar},
        {fits, Schema("<xs:include schemaLocation='other.xsd'/>" + element), kNoGrammar},
        {fits, Schema("<xs:redefine schemaLocation='other.xsd'/>" + element), kNoGrammar},
        {fits, Schema("<xs:import namespace='u' schemaLocation='o.xsd'/>" + element), kNoGrammar},
        {fits,
         Schema(element, "xmlns:i='http://www.w3.org/2001/XMLSchema-instance' "
                         "i:schemaLocation='http://www.w3.org/2001/XMLSchema s.xsd'"),
         0},
        {fits, "<?xml version='1.0' encoding='ISO-8859-1'?><!-- \xE4 -->" + kNumber, 0},
    };
    ::testing::internal::CaptureStderr();
    for (const auto& [document, schema, code] : table) {
        const ParseError error = Validated(document, schema);
        EXPECT_EQ(error.errorCode, code) << document << schema << error.reason;
        EXPECT_EQ(error.reason.empty(), code == 0) << document << schema;
    }
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "") << "nothing prints by itself";
}

/// The text again and again; "#" becomes the number of the turn and "@" the one before.
std::string Turns(int count, std::string_view pattern) {
    std::string text;
    for (int i = 1; i <= count; ++i) {
        for (const char ch : pattern) {
            text += ch == '#'   ? std::to_string(i)
                    : ch == '@' ? std::to_string(i - 1)
                                : std::string(1, ch);
        }
    }
    return text;
}

TEST(Schema, WhatWouldTakeLongToCompileIsRefused) {
    const std::string element = "<xs:element name='r' type='xs:int'/>";
    const auto inElement = [](const std::string& body) {
        return "<xs:element name='r'><xs:complexType><xs:sequence>" + body +
               "</xs:sequence></xs:complexType></xs:element>";
    };
    const auto withPattern = [&](int length) {
        return element + "<xs:simpleType name='p'><xs:restriction base='xs:string'>" +
               "<xs:pattern value='" + Turns(length, "ab") + "'/></xs:restriction></xs:simpleType>";
    };
    const auto counted = [&](int levels) {
        return element + "<xs:complexType name='c'>" +
               Turns(levels, "<xs:sequence maxOccurs='9'>") +
               "<xs:element name='a' minOccurs='0'/>" + Turns(levels, "</xs:sequence>") +
               "</xs:complexType>";
    };
    constexpr const char* kDoubled = "<xs:group name='n#'><xs:sequence><xs:group ref='n@'/>"
                                     "<xs:group ref='n@'/></xs:sequence></xs:group>";
    const std::string groups =
        element +
        "<xs:group name='n0'><xs:sequence><xs:element name='a'/></xs:sequence></xs:group>";
    const std::pair<std::string, bool> table[] = {
        {groups + Turns(3, kDoubled), true},
        {groups + Turns(40, kDoubled), false},
        {element + Turns(30, "<xs:attributeGroup name='n#'><xs:attributeGroup ref='n@'/>"
                             "<xs:attributeGroup ref='n@'/></xs:attributeGroup>"),
         false},
        {element + Turns(40, "<xs:simpleType name='n#'><xs:union memberTypes='n@ n@'/>"
                             "</xs:simpleType>"),
         false},
        {element + "<xs:complexType name='n0'/>" +
             Turns(100, "<xs:complexType name='n#'><xs:complexContent>"
                        "<xs:extension base='n@'/></xs:complexContent></xs:complexType>"),
         false},
        {element + Turns(300, "<xs:element name='n#' substitutionGroup='r'/>"), false},
        {inElement(Turns(2500, "<xs:element name='n#' minOccurs='0'/>")), false},
        {inElement(Turns(50, "<xs:choice minOccurs='0' maxOccurs='unbounded'>"
                             "<xs:element name='n#' maxOccurs='unbounded'/></xs:choice>")),
         false},
        {counted(2), true},
        {counted(3), false},
        {withPattern(90), true},
        {withPattern(9000), false},
        {element + "<!--" + std::string(300'000, ' ') + "-->", false},
    };
    for (const auto& [body, taken] : table) {
        const ParseError error = Validated("<r>12</r>", Schema(body));
        EXPECT_EQ(error.errorCode, taken ? 0 : kNoGrammar) << body.substr(0, 200) << error.reason;
        EXPECT_TRUE(taken || error.reason.find("too") != std::string::npos) << error.reason;
    }
}

std::string PatternSchema(const std::string& pattern) {
    return Schema("<xs:element name='r'><xs:simpleType><xs:restriction base='xs:string'>"
                  "<xs:pattern value='" +
                  pattern + "'/></xs:restriction></xs:simpleType></xs:element>");
}

TEST(Schema, PatternsThatTryEveryWayAreRefusedForValuesWithTooManyWays) {
    const std::string aaa(60, 'a');
    const std::string long1(100'000, 'a');
    const std::tuple<std::string, std::string, std::uint32_t> table[] = {
        {"[0-9]{2}(:[0-9]{2}){3}", "10:00:00:24", 0},
        {"(\\+|-)?\\d{1,9}(\\.\\d+)?", "-12.5", 0},
        {"[^&lt;-[aeiou]]*\\p{L}", "xy", 0},
        {".*\\.(mxf|MXF)", "0001AA.MXF", 0},
        {"(foo|bar|baz){1,3}", "foobar", 0},
        {"[a-z ]*", long1, 0},
        {"(a*)*b", aaa, kInvalid},
        {"([0-9]+,)*[0-9]+", "1,22,333", 0},
        {"a*a*a*b", long1, kNoGrammar},
        {"(a|aa)*b", aaa, kNoGrammar},
        {"(a{1,9}){1,99}b", aaa, kNoGrammar},
        {std::string("a?a?a?a?a?a?a?a?a?a?a?a?a?a?a?a?a?a?a?a?a?a?a?a?a?a?a?") + "aaaaaaaaaaaab",
         aaa, kNoGrammar},
        {".*a.*a.*b", long1, kNoGrammar},
        {"(", "a", kNoGrammar},
        {"a{99999999999}", "a", kNoGrammar},
    };
    for (const auto& [pattern, value, code] : table) {
        std::string document = "<r>" + value;
        document += "</r>";
        EXPECT_EQ(Validated(document, PatternSchema(pattern)).errorCode, code) << pattern;
    }
}

void ExpectRefusedInTime(const std::string& body) {
    EXPECT_EQ(Validated("<r>12</r>", Schema(body)).errorCode, kNoGrammar) << body.substr(0, 200);
}

/// What is taken must be bearable for a small stack as well.
void ValidateDeepOnes() {
    const std::string element = "<xs:element name='r' type='xs:int'/>";
    const std::string brackets = std::string(100'000, '(') + std::string(100'000, ')');
    const std::string fewer = std::string(90, '(') + std::string(90, ')');
    for (const std::string& pattern : {brackets, fewer, "(" + brackets}) {
        ExpectRefusedInTime(element + "<xs:annotation><xs:appinfo><pattern value='" + pattern +
                            "'/></xs:appinfo></xs:annotation>");
        ExpectRefusedInTime(element + "<pattern value='" + pattern + "'/>");
    }
    const auto nested = [](int levels, const std::string& inner) {
        return Turns(levels, "<xs:sequence>") + inner + Turns(levels, "</xs:sequence>");
    };
    const auto groups = [&](int count, int levels) {
        std::string body = element + "<xs:group name='n0'><xs:sequence/></xs:group>";
        for (int i = 1; i <= count; ++i) {
            body += "<xs:group name='n" + std::to_string(i) + "'>" +
                    nested(levels, "<xs:group ref='n" + std::to_string(i - 1) + "'/>") +
                    "</xs:group>";
        }
        return body;
    };
    ExpectRefusedInTime(groups(60, 240));
    ExpectRefusedInTime(groups(250, 1));
    ExpectRefusedInTime(groups(1, 70));
    ExpectRefusedInTime(element + "<xs:annotation>" + Turns(200, "<a>") + Turns(200, "</a>") +
                        "</xs:annotation>");
    EXPECT_EQ(Validated("<r>12</r>", Schema(groups(10, 3))).errorCode, 0U);
    EXPECT_EQ(Validated("<r>12</r>", Schema(groups(1, 50))).errorCode, 0U);
    EXPECT_EQ(
        Validated("<r>x</r>", PatternSchema(std::string(30, '(') + "x" + std::string(30, ')')))
            .errorCode,
        0U);
}

TEST(Schema, NoDepthIsTooMuchForASmallStack) {
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, std::size_t{256} * 1024), 0);
    pthread_t thread{};
    const auto run = [](void*) -> void* { return ValidateDeepOnes(), nullptr; };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, nullptr), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST(Schema, NothingIsOpenedThatADocumentOrAnImportNames) {
    const test::TempFolder folder;
    const std::string other = folder.Path("other.xsd");
    const std::string named = "<xs:element name='s' type='xs:int'/>";
    folder.Write("other.xsd", Schema(named));
    const std::string document = "<s xmlns:i='http://www.w3.org/2001/XMLSchema-instance' "
                                 "i:noNamespaceSchemaLocation='" +
                                 other + "'>12</s>";
    EXPECT_EQ(Validated(document, kNumber).errorCode, kInvalid);
    folder.Write("other.xsd", Schema(named, "targetNamespace='" + other + "'"));
    const std::string importing = Schema(
        "<xs:import namespace='" + other + "'/><xs:element name='r'><xs:complexType>" +
            "<xs:sequence><xs:element ref='q:s'/></xs:sequence></xs:complexType></xs:element>",
        "xmlns:q='" + other + "'");
    EXPECT_EQ(Validated("<r><s xmlns='" + other + "'>12</s></r>", importing).errorCode, kNoGrammar);
}

TEST(Schema, TwoThreadsMayStartAtOnce) {
    const auto validate = [] { EXPECT_EQ(Validated("<r>12</r>", kNumber).errorCode, 0U); };
    std::thread other(validate);
    validate();
    other.join();
}

} // namespace
} // namespace nqp2::dom
