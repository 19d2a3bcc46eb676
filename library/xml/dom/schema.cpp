// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/schema.h"

#include "xml/dom/libxml.h"
#include "xml/dom/schema_cost.h"
#include "xml/dom/serialize.h"

#include <libxml/parser.h>
#include <libxml/xmlschemas.h>
#include <libxml/xmlschemastypes.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <string_view>

namespace nqp2::dom {
namespace {

constexpr std::uint32_t kErrorInvalid = 0xC00CE225U;
constexpr std::uint32_t kErrorNoGrammar = 0xC00CE224U;

template <auto Free>
struct Freed {
    template <class Type>
    void operator()(Type* object) const {
        Free(object);
    }
};
using Doc = std::unique_ptr<xmlDoc, Freed<xmlFreeDoc>>;
using SchemaParser = std::unique_ptr<xmlSchemaParserCtxt, Freed<xmlSchemaFreeParserCtxt>>;
using Schema = std::unique_ptr<xmlSchema, Freed<xmlSchemaFree>>;
using Validation = std::unique_ptr<xmlSchemaValidCtxt, Freed<xmlSchemaFreeValidCtxt>>;

void KeepFirst(void* data, xmlErrorPtr error) {
    auto& kept = *static_cast<ParseError*>(data);
    if (kept.reason.empty() && error->message != nullptr) {
        kept.reason = error->message;
        kept.line = error->line;
    }
}

/// `encoding`: null where the text tells it itself.
Doc Parsed(const std::string& text, const char* encoding) {
    return Doc(xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, encoding,
                             XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
}

/// One file, whose declarations have no namespace: documents are held against those.
bool StandsAlone(const xmlDoc& schema) {
    const xmlNode* const root = xmlDocGetRootElement(&schema);
    return schema.intSubset == nullptr && root != nullptr &&
           xmlHasNsProp(root, BAD_CAST "targetNamespace", nullptr) == nullptr &&
           EveryElement(*root, [](const xmlNode& node, int /*depth*/) {
               return xmlHasNsProp(&node, BAD_CAST "schemaLocation", nullptr) == nullptr;
           });
}

/// Of a serialized document: markup counts as a value too, which is never less than what is there.
ValueSizes SizesIn(std::string_view text) {
    ValueSizes sizes;
    sizes.all = static_cast<double>(text.size());
    while (!text.empty()) {
        const std::size_t length = std::min(text.find_first_of("<>\""), text.size());
        sizes.longest = std::max(sizes.longest, static_cast<double>(length));
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    return sizes;
}

bool HasAffordablePatterns(const xmlDoc& schema, const ValueSizes& values) {
    return EveryElement(*xmlDocGetRootElement(&schema), [&](const xmlNode& node, int /*depth*/) {
        return View(node.name) != "pattern" ||
               IsAffordablePattern(Attribute(node, "value"), values);
    });
}

} // namespace

ParseError Validate(const Node& document, const std::string& schema) {
    // The built-in types are one table for the process, made without a lock when first needed.
    static std::once_flag once;
    std::call_once(once, xmlSchemaInitTypes);
    const QuietLibxml quiet;
    QuietLibxml::RequireStock();
    ParseError noGrammar{kErrorNoGrammar, "", 0, 0, Fault::NotWellFormed};
    if (schema.size() > kLargestSchema) {
        noGrammar.reason = "the schema is too large";
        return noGrammar;
    }
    const Doc schemaDoc = Parsed(schema, nullptr);
    if (schemaDoc == nullptr || !StandsAlone(*schemaDoc)) {
        noGrammar.reason = "the schema is no single XML Schema document without namespace";
        return noGrammar;
    }
    const std::string text = Serialize(document);
    if (!IsAffordable(*schemaDoc) || !HasAffordablePatterns(*schemaDoc, SizesIn(text))) {
        noGrammar.reason = "the schema asks for too much work";
        return noGrammar;
    }
    if (quiet.IsOutOfMemory()) {
        throw std::bad_alloc();
    }
    const SchemaParser parser(xmlSchemaNewDocParserCtxt(schemaDoc.get()));
    xmlSchemaSetParserStructuredErrors(parser.get(), KeepFirst, &noGrammar);
    const Schema grammar(xmlSchemaParse(parser.get()));
    const Doc subject = Parsed(text, "UTF-8");
    if (grammar == nullptr || subject == nullptr) {
        return noGrammar;
    }
    ParseError invalid{kErrorInvalid, "", 0, 0, Fault::NotWellFormed};
    const Validation validation(xmlSchemaNewValidCtxt(grammar.get()));
    xmlSchemaSetValidStructuredErrors(validation.get(), KeepFirst, &invalid);
    const int result = xmlSchemaValidateDoc(validation.get(), subject.get());
    // cppcheck-suppress identicalConditionAfterEarlyExit // memory may have run out since
    if (quiet.IsOutOfMemory()) {
        throw std::bad_alloc();
    }
    return result == 0 ? ParseError() : invalid;
}

} // namespace nqp2::dom
