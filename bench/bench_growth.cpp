// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Measures how work on documents grows with them: the time of one edit, of all attributes, of
// loading all elements.

#include "bench/measure.h"
#include "NQP2ParserU/MarkupMSXML.h"

#include <string>

namespace nqp2::bench {
namespace {

/// A document of that many elements in a list, the list's first one a name to ask for.
void MakeList(CMarkupMSXML& markup, int elements) {
    markup.CreateMainRoot(L"Root");
    markup.IntoElem();
    Require(markup.AddElem(L"List") == 1, "no document");
    markup.IntoElem();
    markup.AddElem(L"Name", L"first");
    for (int i = 0; i < elements; ++i) {
        markup.AddElem(L"Item", i);
    }
}

void Ask(CMarkupMSXML& markup) {
    Require(markup.GetNodeText(L"//Root/List/Name", 1) == L"first", "a wrong answer");
}

void MeasureEdits(Bench& bench, int elements) {
    const std::string count = std::to_string(elements);
    CMarkupMSXML markup;
    MakeList(markup, elements);
    int value = 0;
    bench.Together(Clock::Processor, {{"set_and_ask/" + count,
                                       [&] {
                                           markup.SetData(++value);
                                           Ask(markup);
                                       }},
                                      {"add_and_ask/" + count, [&] {
                                           markup.AddElem(L"Item", ++value);
                                           Ask(markup);
                                           markup.RemoveElem();
                                           Ask(markup);
                                       }}});
}

void AddAttributes(int attributes) {
    CMarkupMSXML markup;
    markup.CreateMainRoot(L"Root");
    CString name;
    for (int i = 0; i < attributes; ++i) {
        name.Format(L"a%d", i);
        Require(markup.AddAttrib(name, i) == 1, "no attribute");
    }
}

/// A document whose elements have all the same name, or each its own.
std::string Elements(int count, bool differ) {
    std::string text = "<Root>";
    for (int i = 0; i < count; ++i) {
        const std::string name = "Name" + std::to_string(differ ? 10000 + i : 10000);
        text.append("<").append(name).append(">1</").append(name).append(">");
    }
    return text + "</Root>";
}

void Load(const std::string& text) {
    CMarkupMSXML markup;
    Require(markup.LoadBytes(text) == 1, "a document does not load");
}

void MeasureAll(Bench& bench) {
    for (const int count : {500, 2000}) {
        MeasureEdits(bench, count);
    }
    bench.Together(Clock::Processor, {{"attributes/500", [] { AddAttributes(500); }},
                                      {"attributes/2000", [] { AddAttributes(2000); }}});
    const std::string fewEqual = Elements(5000, false);
    const std::string manyEqual = Elements(20000, false);
    const std::string fewDifferent = Elements(5000, true);
    const std::string manyDifferent = Elements(20000, true);
    bench.Together(Clock::Processor, {{"equal_names/5000", [&] { Load(fewEqual); }},
                                      {"equal_names/20000", [&] { Load(manyEqual); }},
                                      {"different_names/5000", [&] { Load(fewDifferent); }},
                                      {"different_names/20000", [&] { Load(manyDifferent); }}});
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    return nqp2::bench::Main(argc, argv, 0, "", nqp2::bench::MeasureAll);
}
