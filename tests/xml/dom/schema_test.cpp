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

const std::string kElement = "<xs:element name='r' type='xs:int'/>";
const std::string kNumber = Schema(kElement);

ParseError Validated(std::string_view document, const std::string& schema) {
    const LoadedDocument loaded(document, SelectionRule::Names::Namespace);
    return Validate(loaded.Top(), schema);
}

TEST(Schema, TellsDocumentsThatFitAndTakesOneSchemaFileWithoutNamespace) {
    const std::string fits = "<r>12</r>";
    const std::tuple<std::string, std::string, std::uint32_t> table[] = {
        {"<?xml version='1.0' encoding='UTF-16'?><r>12</r>", kNumber, 0},
        {"<r>x</r>", kNumber, kInvalid},
        {"<r xmlns='u'>12</r>", kNumber, kInvalid},
        {fits, "", kNoGrammar},
        {fits, "<!DOCTYPE s [<!ENTITY e SYSTEM 'file:///etc/hostname'>]>" + kNumber, kNoGrammar},
        {fits, Schema("<xs:element name='r' type='none'/>"), kNoGrammar},
        {fits, Schema(kElement, "targetNamespace='u'"), kNoGrammar},
        {fits, Schema("<xs:include schemaLocation='other.xsd'/>" + kElement), kNoGrammar},
        {fits, Schema("<xs:redefine schemaLocation='other.xsd'/>" + kElement), kNoGrammar},
        {fits, Schema("<xs:import namespace='u' schemaLocation='o.xsd'/>" + kElement), kNoGrammar},
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
    const auto inElement = [](const std::string& body) {
        return "<xs:element name='r'><xs:complexType><xs:sequence>" + body +
               "</xs:sequence></xs:complexType></xs:element>";
    };
    const auto counted = [&](int levels) {
        return inElement(Turns(levels, "<xs:sequence maxOccurs='9'>") +
                         "<xs:element name='a' minOccurs='0'/>" + Turns(levels, "</xs:sequence>"));
    };
    constexpr const char* kDoubled = "<xs:group name='n#'><xs:sequence><xs:group ref='n@'/>"
                                     "<xs:group ref='n@'/></xs:sequence></xs:group>";
    const std::string groups =
        kElement +
        "<xs:group name='n0'><xs:sequence><xs:element name='a'/></xs:sequence></xs:group>";
    const std::pair<std::string, bool> table[] = {
        {groups + Turns(3, kDoubled), true},
        {groups + Turns(40, kDoubled), false},
        {kElement + Turns(30, "<xs:attributeGroup name='n#'><xs:attributeGroup ref='n@'/>"
                              "<xs:attributeGroup ref='n@'/></xs:attributeGroup>"),
         false},
        {kElement + Turns(300, "<xs:element name='n#' substitutionGroup='r'/>"), false},
        {inElement(Turns(2500, "<xs:element name='n#' minOccurs='0'/>")), false},
        {counted(2), true},
        {counted(3), false},
        {kElement + "<!--" + std::string(300'000, ' ') + "-->", false},
    };
    for (const auto& [body, taken] : table) {
        const ParseError error = Validated("<r/>", Schema(body));
        EXPECT_EQ(error.errorCode == kNoGrammar, !taken) << body.substr(0, 200) << error.reason;
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
        {"[^&lt;-[aeiou]]*\\p{L}", "xy", 0},
        {"[a-z ]*", long1, 0},
        {"(a*)*b", aaa, kInvalid},
        {"a*a*a*b", long1, kNoGrammar},
        {"(a|aa)*b", aaa, kNoGrammar},
        {"(a{1,9}){1,99}b", aaa, kNoGrammar},
        {Turns(27, "a?") + "aaaab", aaa, kNoGrammar},
        {Turns(4500, "ab"), "a", kNoGrammar},
        {"a{99999999999}", "a", kNoGrammar},
    };
    for (const auto& [pattern, value, code] : table) {
        const std::string document = std::string("<r>").append(value).append("</r>");
        EXPECT_EQ(Validated(document, PatternSchema(pattern)).errorCode, code) << pattern;
    }
}

/// What is taken must be bearable for a small stack as well.
void ValidateDeepOnes() {
    const auto codeOf = [](const std::string& body) {
        return Validated("<r>12</r>", Schema(kElement + body)).errorCode;
    };
    for (const std::size_t depth : {90U, 100'000U}) {
        EXPECT_EQ(codeOf("<pattern value='" + Repeated("(", depth) + Repeated(")", depth) + "'/>"),
                  kNoGrammar);
    }
    const auto groups = [](int count, std::size_t levels) {
        return "<xs:group name='n0'><xs:sequence/></xs:group>" +
               Turns(count, "<xs:group name='n#'>" + Repeated("<xs:sequence>", levels) +
                                "<xs:group ref='n@'/>" + Repeated("</xs:sequence>", levels) +
                                "</xs:group>");
    };
    for (const auto& [count, levels] : {std::pair{60, 240U}, {250, 1U}, {1, 70U}}) {
        EXPECT_EQ(codeOf(groups(count, levels)), kNoGrammar) << count << " of " << levels;
    }
    EXPECT_EQ(codeOf(Repeated("<a>", 200) + Repeated("</a>", 200)), kNoGrammar);
    EXPECT_EQ(codeOf(groups(10, 3)) + codeOf(groups(1, 50)), 0U);
    const std::string taken = PatternSchema(Repeated("(", 30) + "x" + Repeated(")", 30));
    EXPECT_EQ(Validated("<r>x</r>", taken).errorCode, 0U);
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
    EXPECT_EQ(Validated("<s xmlns:i='http://www.w3.org/2001/XMLSchema-instance' "
                        "i:noNamespaceSchemaLocation='" +
                            other + "'>12</s>",
                        kNumber)
                  .errorCode,
              kInvalid);
}

TEST(Schema, TwoThreadsMayStartAtOnce) {
    const auto validate = [] { EXPECT_EQ(Validated("<r>12</r>", kNumber).errorCode, 0U); };
    std::thread other(validate);
    validate();
    other.join();
}

} // namespace
} // namespace nqp2::dom
