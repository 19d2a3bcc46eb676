// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// What the quick parser takes, libxml2 takes as well, with the same tree.

#include "fuzz/fuzz_target.h"
#include "xml/dom/parser.h"
#include "xml/dom/quick_parser.h"
#include "xml/dom/tree.h"

#include <memory>

namespace nqp2::fuzz {
namespace {

using dom::Node;
using dom::Tree;

void ExpectSame(const Node& quick, const Node& sound) {
    Require(quick.type == sound.type && quick.Name() == sound.Name() &&
                quick.PrefixLength() == sound.PrefixLength() && quick.Uri() == sound.Uri() &&
                quick.Content() == sound.Content(),
            "the quick parser gives the same node");
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
        one = dom::NextInOrder(*one, quickTop);
        other = dom::NextInOrder(*other, soundTop);
    }
    Require(one == other, "the quick parser gives the same number of nodes");
}

} // namespace

void TestInput(Input input) {
    static dom::Parser parser;
    const std::string_view bytes = AsText(input);
    const auto quick = std::make_shared<Tree>();
    if (dom::ParseQuickly(bytes, *quick, dom::MaxTreeBytes(bytes.size()))) {
        const auto sound = std::make_shared<Tree>();
        Require(parser.ParseWithLibxml(bytes, *sound).fault == dom::Fault::None,
                "libxml2 takes what the quick parser takes");
        ExpectSame(*quick, *sound);
    } else {
        Require(quick->Root() == nullptr, "nothing is left of what the quick parser does not take");
    }
}

} // namespace nqp2::fuzz
