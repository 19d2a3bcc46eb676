// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/event_reader.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

namespace nqp2::dom {
namespace {

/// Writes the events down; throws at an element of the name "throw".
class Events final : public EventHandler {
public:
    void OnStart(const EventElement& element) override {
        if (element.name == "throw") {
            throw std::runtime_error("thrown");
        }
        text.append("<").append(element.name).append("{").append(element.uri).append("}");
        for (const EventAttribute& each : element.attributes) {
            text.append(" ").append(each.uri).append(each.name).append("=").append(each.value);
        }
        text.append("@").append(std::to_string(element.line)).append(">");
    }
    void OnEnd(int /*line*/) override { text.append("</>"); }
    void OnText(std::string_view piece, int /*line*/) override { text.append(piece); }

    std::string text;
};

ParseError Read(std::string_view document, std::size_t piece, Events& events,
                const EventLimits& limits = {}) {
    EventReader reader(events, limits);
    while (!document.empty() && reader.Add(document.substr(0, piece))) {
        document.remove_prefix(std::min(piece, document.size()));
    }
    return reader.Finish();
}

TEST(EventReader, TellsWhatADocumentHoldsInPiecesOfAnySize) {
    const std::string document = "<?xml version=\"1.0\"?>\n<a xmlns=\"u\" xmlns:p=\"v\">\n"
                                 "<p:b c=\"1 &amp; &#65;\" p:d='2'>x&lt;<![CDATA[<y>]]></p:b>"
                                 "<!-- c --><?i?><e/></a>\n";
    for (std::size_t piece = 1; piece <= document.size(); ++piece) {
        Events events;
        EXPECT_EQ(Read(document, piece, events).fault, Fault::None) << piece;
        EXPECT_EQ(events.text, "<a{u}@2>\n<b{v} c=1 & A vd=2@3>x<<y></><e{u}@3></></>");
    }
}

TEST(EventReader, KeepsToItsBoundsAndTellsTheLine) {
    constexpr std::size_t kLong = 100'000;
    const std::string filler(kLong, 'x');
    std::string names = "<a>";
    std::string deep;
    std::string attributes = "<a";
    for (int i = 0; i < 70; ++i) {
        deep += "<a>";
        attributes += " a" + std::to_string(i) + "=''";
    }
    for (int i = 0; i < 3000; ++i) {
        names += "<name" + std::string(500, 'n') + std::to_string(i) + "/>";
    }
    struct {
        std::string document;
        Fault fault;
        int line;
    } const kCases[] = {
        {"\n<!DOCTYPE a><a/>", Fault::DocumentType, 2},
        {"<a>\n&b;</a>", Fault::NotWellFormed, 2},
        {"<a>\n<p:b/></a>", Fault::NotWellFormed, 2},
        {"<a>\n</b>", Fault::NotWellFormed, 2},
        {"", Fault::NotWellFormed, 1},
        {"<a>", Fault::NotWellFormed, 1},
        {"<a/><b/>", Fault::NotWellFormed, 1},
        {deep, Fault::TooLarge, 1},
        {attributes + "/>", Fault::TooLarge, 1},
        {"<a>\n<" + filler + "/></a>", Fault::TooLarge, 2},
        {"<a b='" + filler + "'/>", Fault::TooLarge, 1},
        {"<a><!-- " + filler + "--></a>", Fault::TooLarge, 1},
        {names + "</a>", Fault::TooLarge, 1},
        {"<a>" + filler + filler + "</a>", Fault::None, 0},
    };
    for (const auto& each : kCases) {
        Events events;
        const ParseError error = Read(each.document, kLong, events);
        EXPECT_EQ(error.fault, each.fault) << each.document.substr(0, 40) << error.reason;
        EXPECT_EQ(error.line, each.line) << each.document.substr(0, 40);
        EXPECT_EQ(error.reason.empty(), each.fault == Fault::None);
    }
}

TEST(EventReader, WhatAHandlerThrowsComesOut) {
    Events events;
    EXPECT_THROW(Read("<a><throw/><b/></a>", 3, events), std::runtime_error);
    EXPECT_EQ(events.text, "<a{}@1>");
}

} // namespace
} // namespace nqp2::dom
