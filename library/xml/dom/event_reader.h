// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/parse_error.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>

namespace nqp2::dom {

struct EventAttribute {
    std::string_view name; ///< without prefix
    std::string_view uri;  ///< "" for one without prefix
    std::string_view value;
};

struct EventElement {
    std::string_view name; ///< without prefix
    std::string_view uri;  ///< of its namespace; "" for none
    std::span<const EventAttribute> attributes;
    int line = 0; ///< where its tag ends
};

/// Is told what a document holds. What it is handed is valid during the call. An exception ends
/// the document and comes out of EventReader::Add.
class EventHandler {
public:
    virtual ~EventHandler() = default;
    virtual void OnStart(const EventElement& element) = 0;
    virtual void OnEnd(int line) = 0;
    /// A piece of text, CDATA included; one text may come in several.
    virtual void OnText(std::string_view piece, int line) = 0;
};

/// Bounds of a document that may be of any size.
struct EventLimits {
    int depth = 64;
    int attributes = 64;                          ///< of one element
    std::size_t markup = std::size_t{64} * 1024;  ///< bytes of one tag, comment or instruction
    std::size_t names = std::size_t{1024} * 1024; ///< bytes of all different names
};

/// Reads a document that comes piece by piece, and keeps nothing of it: libxml2's push parser, with
/// neither document types nor entities. One thread at a time.
class EventReader {
public:
    explicit EventReader(EventHandler& handler, const EventLimits& limits = {});
    ~EventReader();
    EventReader(const EventReader&) = delete;
    EventReader& operator=(const EventReader&) = delete;

    /// False after a fault: what follows can change nothing any more.
    bool Add(std::string_view bytes);
    /// Ends the document. The first fault of it, or none.
    const ParseError& Finish();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace nqp2::dom
