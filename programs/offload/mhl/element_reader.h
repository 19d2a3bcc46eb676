// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/event_reader.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::mhl {

/// Elements by numbers of each kind of document; 0 is the document itself.
using ElementId = std::uint8_t;

/// What an element is that stands in another one.
struct ElementRow {
    enum class Kind : std::uint8_t { Children, Text, Anything };

    ElementId parent;
    std::string_view name; ///< "" for any
    ElementId element;
    Kind kind;
    std::string_view uri = {}; ///< when it is not the document's namespace
};

/// Is told of the elements of a document that its table knows.
class ElementHandler {
public:
    virtual ~ElementHandler() = default;
    virtual void OnOpen(ElementId element, ElementId parent, const dom::EventElement& event) = 0;
    /// `text`: of one of Kind::Text.
    virtual void OnClose(ElementId element, ElementId parent, const std::string& text,
                         int line) = 0;
    /// One that the table does not know; nothing is told of what is in it.
    virtual void OnUnknown(ElementId parent, const dom::EventElement& event) = 0;
    virtual void OnFault(int line, std::string sentence) = 0;
};

/// Reads documents of one kind that come piece by piece. Prefixes and the order of elements do not
/// count.
class ElementReader final : private dom::EventHandler {
public:
    /// Longer texts are cut off, and are a fault.
    static constexpr std::size_t kMaxText = std::size_t{64} * 1024;

    /// `rows` and `uri` outlive the reader.
    ElementReader(std::span<const ElementRow> rows, std::string_view uri, ElementHandler& handler);

    /// False as soon as nothing that follows can count any more; the handler was told why.
    bool Add(std::string_view bytes);
    /// False when it was no whole document of that kind.
    bool Finish();

private:
    struct Level {
        ElementId element;
        ElementRow::Kind kind;
    };

    void OnStart(const dom::EventElement& element) override;
    void OnEnd(int line) override;
    void OnText(std::string_view piece, int line) override;
    [[nodiscard]] const ElementRow* RowOf(ElementId parent, const dom::EventElement& element) const;
    bool Tell(const dom::ParseError& error);

    std::span<const ElementRow> m_rows;
    std::string_view m_uri;
    ElementHandler& m_handler;
    dom::EventReader m_reader;
    std::vector<Level> m_open;
    std::string m_text;
    std::size_t m_skipped = 0; ///< open elements that count for nothing
    bool m_isOther = false;    ///< another kind of document
    bool m_isTold = false;
};

/// The value of an attribute without a namespace; "" when it is missing.
std::string_view AttributeOf(const dom::EventElement& element, std::string_view name);

/// A text without the blanks around it.
std::string_view Trimmed(std::string_view text);

} // namespace nqp2::mhl
