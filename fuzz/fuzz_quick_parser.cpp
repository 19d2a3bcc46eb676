// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// What the quick parser takes, libxml2 takes as well, with the same tree.

#include "fuzz/measured_input.h"
#include "fuzz/require.h"
#include "xml/dom/parser.h"
#include "xml/dom/quick_parser.h"
#include "xml/dom/tree.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace {

using nqp2::dom::Node;
using nqp2::dom::Tree;
using nqp2::fuzz::Require;

void ExpectSame(const Node& quick, const Node& sound) {
    Require(quick.type == sound.type, "the quick parser gives the same kind of a node");
    Require(quick.Name() == sound.Name() && quick.PrefixLength() == sound.PrefixLength(),
            "the quick parser gives the same name");
    Require(quick.Uri() == sound.Uri(), "the quick parser gives the same namespace");
    Require(quick.Content() == sound.Content(), "the quick parser gives the same content");
}

void ExpectSameAttributes(const Node& quick, const Node& sound) {
    const Node* one = quick.FirstAttribute();
    const Node* other = sound.FirstAttribute();
    for (; one != nullptr && other != nullptr; one = one->Next(), other = other->Next()) {
        ExpectSame(*one, *other);
    }
    Require(one == other, "the quick parser gives the same number of attributes");
}

int DepthOf(const Node& node) {
    int depth = 0;
    for (const Node* up = node.parent; up != nullptr; up = up->parent) {
        ++depth;
    }
    return depth;
}

void ExpectSame(Tree& quick, Tree& sound) {
    const Node& quickTop = quick.DocumentNode();
    const Node& soundTop = sound.DocumentNode();
    const Node* one = &quickTop;
    const Node* other = &soundTop;
    while (one != nullptr && other != nullptr) {
        ExpectSame(*one, *other);
        ExpectSameAttributes(*one, *other);
        Require(DepthOf(*one) == DepthOf(*other),
                "the quick parser gives the same place of a node");
        one = nqp2::dom::NextInOrder(*one, quickTop);
        other = nqp2::dom::NextInOrder(*other, soundTop);
    }
    Require(one == other, "the quick parser gives the same number of nodes");
}

} // namespace

int nqp2::fuzz::TestInput(const std::uint8_t* data, std::size_t size) {
    static nqp2::dom::Parser parser;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto quick = std::make_shared<Tree>();
    if (nqp2::dom::ParseQuickly(bytes, *quick)) {
        const auto sound = std::make_shared<Tree>();
        Require(parser.ParseWithLibxml(bytes, *sound).fault == nqp2::dom::Fault::None,
                "libxml2 takes what the quick parser takes");
        ExpectSame(*quick, *sound);
    } else {
        Require(quick->Root() == nullptr, "nothing is left of what the quick parser does not take");
    }
    return 0;
}
