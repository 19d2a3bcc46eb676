// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/document.h"
#include "xml/dom/select.h"
#include "xml/dom/serialize.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <string_view>

namespace nqp2::dom {

/// A document that the test needs to be well-formed.
class LoadedDocument : public Document {
public:
    explicit LoadedDocument(std::string_view text,
                            SelectionRule::Names names = SelectionRule::Names::Qualified)
        : Document(names) {
        EXPECT_TRUE(LoadText(text)) << LastError().reason << " in " << text;
    }

    [[nodiscard]] Tree& Nodes() const { return *Content(); }
    [[nodiscard]] Node& Top() const { return Nodes().DocumentNode(); }
    [[nodiscard]] std::string Saved() const { return Serialize(Top()); }
    [[nodiscard]] Node& First(std::string_view path) const {
        Node* const node = SelectFirst(Top(), path);
        if (node == nullptr) {
            throw std::runtime_error("nothing at " + std::string(path));
        }
        return *node;
    }
};

inline std::string Repeated(std::string_view text, std::size_t times) {
    std::string all;
    while (times-- > 0) {
        all.append(text);
    }
    return all;
}

} // namespace nqp2::dom
