// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/parse_error.h"

#include <libxml/xmlerror.h>

#include <algorithm>
#include <iterator>

namespace nqp2::dom {
namespace {

struct CodePair {
    int libxml;
    std::uint32_t platform;
};

constexpr CodePair kCodes[] = {
    {XML_ERR_DOCUMENT_EMPTY, 0xC00CE558U},         {XML_ERR_DOCUMENT_END, 0xC00CE556U},
    {XML_ERR_INVALID_CHAR, 0xC00CE508U},           {XML_ERR_UNDECLARED_ENTITY, 0xC00CE002U},
    {XML_ERR_UNKNOWN_ENCODING, 0xC00CE56EU},       {XML_ERR_UNSUPPORTED_ENCODING, 0xC00CE56EU},
    {XML_ERR_LT_IN_ATTRIBUTE, 0xC00CE506U},        {XML_ERR_ATTRIBUTE_NOT_STARTED, 0xC00CE502U},
    {XML_ERR_ATTRIBUTE_REDEFINED, 0xC00CE554U},    {XML_ERR_RESERVED_XML_NAME, 0xC00CE557U},
    {XML_ERR_TAG_NAME_MISMATCH, 0xC00CE56DU},      {XML_ERR_TAG_NOT_FINISHED, 0xC00CE553U},
    {XML_NS_ERR_XML_NAMESPACE, 0xC00CE01DU},       {XML_NS_ERR_UNDEFINED_NAMESPACE, 0xC00CE01DU},
    {XML_NS_ERR_ATTRIBUTE_REDEFINED, 0xC00CE554U},
};

constexpr std::uint32_t kOtherFault = 0xC00CE512U;
constexpr std::uint32_t kSecondRoot = 0xC00CE555U;
constexpr std::uint32_t kInvalidAtTopLevel = 0xC00CE556U;

bool StartsElement(std::string_view text) {
    return text.size() > 1 && text[0] == '<' && text[1] != '!' && text[1] != '?' && text[1] != '/';
}

std::uint32_t PlatformErrorCode(const xmlError& error, std::string_view ahead) {
    if (error.code == XML_ERR_DOCUMENT_EMPTY && !ahead.empty()) {
        return kInvalidAtTopLevel;
    }
    if (error.code == XML_ERR_DOCUMENT_END && StartsElement(ahead)) {
        return kSecondRoot;
    }
    const auto* const found =
        std::find_if(std::begin(kCodes), std::end(kCodes),
                     [&](const CodePair& pair) { return pair.libxml == error.code; });
    return found != std::end(kCodes) ? found->platform : kOtherFault;
}

/// One line for a person: some of libxml2's messages go on, or quote the file at any length. Of a
/// limit they name what a program could ask it for.
std::string Reason(const xmlError& error) {
    constexpr std::size_t kLongest = 200;
    const std::string_view message = error.message != nullptr ? error.message : "not well-formed";
    if (message.find("XML_PARSE_HUGE") != std::string_view::npos) {
        return message.find("depth") != std::string_view::npos ? "elements are nested too deeply"
                                                               : "a part of it is too long";
    }
    return std::string(message.substr(0, std::min(message.find_first_of("\r\n"), kLongest)));
}

} // namespace

ParseError NotWellFormed(const xmlError& error, std::string_view ahead) {
    return {PlatformErrorCode(error, ahead), Reason(error), error.line, error.int2,
            Fault::NotWellFormed};
}

} // namespace nqp2::dom
