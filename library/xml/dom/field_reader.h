// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/field_set.h"
#include "xml/dom/known_way.h"
#include "xml/dom/patience.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::dom {

/// What a document has of a FieldSet. The texts live until the next document is read.
struct FieldValues {
    struct Value {
        bool isThere = false;
        std::string_view text;
        std::string_view attribute; ///< "" for a missing one too
    };
    struct List {
        std::size_t count = 0;
        std::vector<Value> cells; ///< one element's after another's
    };
    bool hasBase = false;
    std::vector<Value> values; ///< the first in document order, by index
    std::vector<List> lists;
};

/// Reads what is wanted of plain documents without a tree: it builds nothing for what nobody asks,
/// and goes over what it knows from the documents before, see stretch_memory.h.
///
/// It takes what quick_tokenizer.h takes, but: at most 48 KiB, which no limit on trees or texts can
/// meet; one base, that of the root; and a text alone in each element whose value is wanted. Of all
/// other documents the tree knows the rule.
class FieldReader {
public:
    /// `wanted` must outlive this object.
    explicit FieldReader(const FieldSet& wanted);

    /// Reads a document. False, and nothing is known of it, for what is not taken; behind a row of
    /// such documents most are not even tried.
    bool Read(std::string_view bytes) noexcept;
    [[nodiscard]] const FieldValues& Values() const { return m_values; }

private:
    bool TryRead(std::string_view bytes) noexcept;

    const FieldSet& m_wanted;
    KnownWay m_way;
    FieldValues m_values;
    std::string m_text; ///< the document, decoded in place
    Patience m_reading;

    class Sink;
};

} // namespace nqp2::dom
