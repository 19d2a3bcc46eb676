// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/schema.h"

#include "tests/support/temp_folder.h"
#include "tests/xml/dom/loaded_document.h"

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

TEST(Schema, TellsDocumentsThatFitFromThoseThatDoNot) {
    struct {
        const char* document;
        std::uint32_t code;
    } const table[] = {
        {"<r>12</r>", 0},
        {"<?xml version='1.0' encoding='UTF-16'?><r>12</r>", 0},
        {"<r>x</r>", kInvalid},
        {"<s>12</s>", kInvalid},
        {"<r xmlns='u'>12</r>", kInvalid},
        {"<r a='1'>12</r>", kInvalid},
    };
    for (const auto& row : table) {
        const ParseError error = Validated(row.document, kNumber);
        EXPECT_EQ(error.errorCode, row.code) << row.document << error.reason;
        EXPECT_EQ(error.reason.empty(), row.code == 0) << row.document << error.reason;
    }
}

TEST(Schema, OnlyASingleSchemaWithoutNamespaceIsTaken) {
    const std::string element = "<xs:element name='r' type='xs:int'/>";
    struct {
        std::string schema;
        std::uint32_t code;
    } const table[] = {
        {"", kNoGrammar},
        {"<r>", kNoGrammar},
        {"<r/>", kNoGrammar},
        {"<!DOCTYPE s [<!ENTITY e SYSTEM 'file:///etc/hostname'>]>" + kNumber, kNoGrammar},
        {Schema("<xs:element name='r' type='none'/>"), kNoGrammar},
        {Schema("<xs:element name='r'><xs:simpleType><xs:restriction base='xs:string'>"
                "<xs:pattern value='[a-'/></xs:restriction></xs:simpleType></xs:element>"),
         kNoGrammar},
        {Schema(element, "targetNamespace='u'"), kNoGrammar},
        {Schema("<xs:include schemaLocation='other.xsd'/>" + element), kNoGrammar},
        {Schema("<xs:redefine schemaLocation='other.xsd'/>" + element), kNoGrammar},
        {Schema("<xs:import namespace='u' schemaLocation='other.xsd'/>" + element), kNoGrammar},
        {Schema(element, "xmlns:i='http://www.w3.org/2001/XMLSchema-instance' "
                         "i:schemaLocation='http://www.w3.org/2001/XMLSchema s.xsd'"),
         0},
        {"<?xml version='1.0' encoding='ISO-8859-1'?><!-- \xE4 -->" + kNumber, 0},
    };
    ::testing::internal::CaptureStderr();
    for (const auto& row : table) {
        const ParseError error = Validated("<r>12</r>", row.schema);
        EXPECT_EQ(error.errorCode, row.code) << row.schema << error.reason;
        EXPECT_EQ(error.reason.empty(), row.code == 0) << row.schema;
    }
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "") << "nothing prints by itself";
}

TEST(Schema, DocumentNamesNoSchemaOfItsOwn) {
    const test::TempFolder folder;
    const std::string other =
        folder.Write("other.xsd", Schema("<xs:element name='s' type='xs:int'/>"));
    const std::string document = "<s xmlns:i='http://www.w3.org/2001/XMLSchema-instance' "
                                 "i:noNamespaceSchemaLocation='" +
                                 other + "'>12</s>";
    EXPECT_EQ(Validated(document, kNumber).errorCode, kInvalid);
}

TEST(Schema, ImportWithoutLocationOpensNothing) {
    const test::TempFolder folder;
    const std::string other = folder.Path("other.xsd");
    folder.Write("other.xsd",
                 Schema("<xs:element name='s' type='xs:int'/>", "targetNamespace='" + other + "'"));
    const std::string importing = Schema(
        "<xs:import namespace='" + other +
            "'/><xs:element name='r'><xs:complexType>"
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
