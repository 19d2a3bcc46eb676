// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/path_set.h"

#include "tests/xml/dom/loaded_document.h"

namespace nqp2::dom {
namespace {

TEST(PathSet, FindsWhatEachPathAloneWouldFind) {
    constexpr std::string_view kPaths[] = {"A",     "A/B",     "A/B/C", "A/D", "E",  "A/B/C/C",
                                           "p:A/B", "A/B/C/D", "none",  "B",   "C/A"};
    const PathSet set(kPaths);
    const char* const documents[] = {
        "<r/>",
        "<r><A/><A><B>1</B><B>2<C>3</C></B></A><A><D>4</D></A><E>5</E></r>",
        "<r xmlns='u' xmlns:p='v'>x<p:A><B>1</B></p:A><!--A--><A><B><C><C>2</C></C></B></A></r>",
        "<r><A><A><B>1</B></A><B><B><C>2</C></B></B></A><B>3<C/></B><C><A>4</A></C></r>",
        "<r><A><B><D/></B></A><A><B><C/></B></A><A><B><C><D>1</D></C></B></A><none.>x</none.></r>",
    };
    for (const char* const text : documents) {
        const LoadedDocument document(text);
        Node& root = *document.Nodes().Root();
        std::vector<Node*> found(std::size(kPaths), &root);
        set.Find(root, found);
        for (std::size_t i = 0; i < found.size(); ++i) {
            EXPECT_EQ(found[i], SelectFirst(root, kPaths[i])) << kPaths[i] << " in " << text;
        }
    }
}

} // namespace
} // namespace nqp2::dom
