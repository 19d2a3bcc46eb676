// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/element_reader.h"

#include <algorithm>

namespace nqp2::mhl {

ElementReader::ElementReader(std::span<const ElementRow> rows, std::string_view uri,
                             ElementHandler& handler)
    : m_rows(rows), m_uri(uri), m_handler(handler),
      m_reader(*this), m_open{{0, ElementRow::Kind::Children}} {}

bool ElementReader::Add(std::string_view bytes) {
    return !m_isOther && (m_reader.Add(bytes) || Tell(m_reader.Finish())) && !m_isOther;
}

bool ElementReader::Finish() {
    return !m_isOther && Tell(m_reader.Finish());
}

/// Whether there is no fault.
bool ElementReader::Tell(const dom::ParseError& error) {
    if (error.fault != dom::Fault::None && !m_isTold) {
        m_isTold = true;
        m_handler.OnFault(error.line, error.reason);
    }
    return error.fault == dom::Fault::None;
}

const ElementRow* ElementReader::RowOf(ElementId parent, const dom::EventElement& element) const {
    const auto found = std::find_if(m_rows.begin(), m_rows.end(), [&](const ElementRow& row) {
        return row.parent == parent && (row.name.empty() || row.name == element.name) &&
               element.uri == (row.uri.empty() ? m_uri : row.uri);
    });
    return found != m_rows.end() ? &*found : nullptr;
}

void ElementReader::OnStart(const dom::EventElement& element) {
    const Level top = m_open.back();
    if (m_isOther || m_skipped > 0 || top.kind == ElementRow::Kind::Anything) {
        ++m_skipped;
        return;
    }
    const ElementRow* const row =
        top.kind == ElementRow::Kind::Children ? RowOf(top.element, element) : nullptr;
    if (row != nullptr) {
        m_open.push_back({row->element, row->kind});
        m_text.clear();
        m_handler.OnOpen(row->element, top.element, element);
        return;
    }
    ++m_skipped;
    if (m_open.size() == 1) {
        m_isOther = true;
        m_handler.OnFault(element.line,
                          "is another kind of document: " + std::string(element.name) +
                              " in the namespace \"" + std::string(element.uri) + "\"");
    } else {
        m_handler.OnUnknown(top.element, element);
    }
}

void ElementReader::OnEnd(int line) {
    if (m_skipped > 0) {
        --m_skipped;
        return;
    }
    const ElementId element = m_open.back().element;
    m_open.pop_back();
    m_handler.OnClose(element, m_open.back().element, m_text, line);
}

void ElementReader::OnText(std::string_view piece, int line) {
    if (m_skipped > 0 || m_open.back().kind != ElementRow::Kind::Text) {
        return;
    }
    const std::size_t room = kMaxText - m_text.size();
    if (piece.size() > room && room > 0) {
        m_handler.OnFault(line, "a text is longer than " + std::to_string(kMaxText) + " bytes");
    }
    m_text.append(piece.substr(0, room));
}

std::string_view AttributeOf(const dom::EventElement& element, std::string_view name) {
    const auto found = std::find_if(
        element.attributes.begin(), element.attributes.end(),
        [&](const dom::EventAttribute& each) { return each.name == name && each.uri.empty(); });
    return found != element.attributes.end() ? found->value : std::string_view();
}

std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = std::min(text.find_first_not_of(kBlanks), text.size());
    text.remove_prefix(first);
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

} // namespace nqp2::mhl
