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
#include <vector>

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

inline std::string TextOf(const Node& node) {
    std::string scratch;
    return std::string(Text(node, scratch));
}

inline std::vector<std::string> TextsOf(const std::vector<Node*>& nodes) {
    std::vector<std::string> texts;
    for (const Node* const node : nodes) {
        texts.push_back(TextOf(*node));
    }
    return texts;
}

inline std::string Repeated(std::string_view text, std::size_t times) {
    std::string all;
    all.reserve(text.size() * times);
    for (std::size_t i = 0; i < times; ++i) {
        all.append(text);
    }
    return all;
}

} // namespace nqp2::dom
