// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/parse_error.h"
#include "xml/dom/tree.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace nqp2::platform {
class FileReader;
}

namespace nqp2::dom {

/// What the tree of a document of that size may take (Tree::BytesUsed), for all that the limit of
/// XmlLimits.h leaves.
std::size_t MaxTreeBytes(std::uint64_t documentBytes) noexcept;

/// Turns XML text into a tree. Keeps its parser state between documents, which halves the cost of
/// a small file. Refuses document types, undeclared prefixes, nesting beyond libxml2's default
/// depth, and trees that take more memory than XmlLimits.h allows; never opens anything.
class Parser {
public:
    class Source;

    Parser();
    ~Parser();
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;

    /// A file's bytes; the encoding is told by its byte-order mark or declaration.
    ParseError ParseBytes(std::string_view bytes, Tree& tree);
    /// The same without the quick parser, which may change nothing but the time that it takes.
    ParseError ParseWithLibxml(std::string_view bytes, Tree& tree);
    /// Text that already is UTF-8, whatever its declaration says.
    ParseError ParseText(std::string_view utf8, Tree& tree);
    /// A large file, read piece by piece; more than `limit` bytes is an error.
    ParseError ParseStream(platform::FileReader& reader, std::uint64_t limit, Tree& tree);

private:
    ParseError Parse(Source& source, const char* encoding, Tree& tree);

    struct Context;
    std::unique_ptr<Context> m_context;
};

} // namespace nqp2::dom
