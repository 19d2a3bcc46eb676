// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Measures the scan of cards beside the least work that it can be compared with, and the steps that
// a clip goes through.
//
//     bench_scan {NAME CARD CLIPS-ONLY}...
//
// NAME is part of the figures' names; CLIPS-ONLY is the same card without the folders of media.

#include "bench/measure.h"
#include "bench/plain_read.h"
#include "bench/scan.h"
#include "NQP2ParserU/DriveMap.h"
#include "NQP2ParserU/MarkupMSXML.h"

#include <cstddef>
#include <libxml/parser.h>
#include <malloc.h>
#include <memory>
#include <string>
#include <vector>

namespace nqp2::bench {
namespace {

void ParseBare(xmlParserCtxt* context, const std::vector<std::string>& documents) {
    for (const std::string& document : documents) {
        const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> tree(
            xmlCtxtReadMemory(context, document.data(), static_cast<int>(document.size()), nullptr,
                              nullptr, XML_PARSE_NONET),
            xmlFreeDoc);
        Require(tree != nullptr, "a metadata file does not parse");
    }
}

void ParseOurs(CMarkupMSXML& markup, const std::vector<std::string>& documents) {
    for (const std::string& document : documents) {
        Require(markup.LoadBytes(document) == 1, "a metadata file does not load");
    }
}

/// Bytes that the program holds on the heap.
std::size_t HeldBytes() {
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

/// What a clip of the card takes in memory once it is loaded. The card is a drive: a record has
/// about seven paths, which would take as much more as the way to the card is long.
double MemoryOfClip(const std::string& card) {
    Require(MapDrive(L"E", card.c_str()), "no drive for the card");
    CardScan scan(card, L"E");
    scan.Run(); // what the parser keeps for itself is no clip's
    scan.Forget();
    const std::size_t before = HeldBytes();
    scan.Run();
    return static_cast<double>(HeldBytes() - before) / static_cast<double>(scan.Clips().GetSize());
}

void MeasureSteps(Bench& bench, const std::string& name, const std::string& card,
                  const std::vector<std::string>& documents) {
    CardScan scan(card);
    scan.Run();
    CArray<_tag_P2Clip> copy;
    CMarkupMSXML markup;
    bench.Together(Clock::Processor,
                   {{"list/" + name, [&] { Keep(ListClips(card).size()); }},
                    {"markup/" + name, [&] { ParseOurs(markup, documents); }},
                    {"copy/" + name, [&] { copy.Copy(scan.Clips()); }, {}, [&] { copy = {}; }}});
}

void MeasureCard(Bench& bench, const std::string& name, const std::string& card,
                 const std::string& clipsOnly) {
    const std::vector<std::string> documents = ReadDocuments(card);
    const std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> context(xmlNewParserCtxt(),
                                                                               xmlFreeParserCtxt);
    CardScan scan(card);
    CardScan bareScan(clipsOnly);
    bench.Together(Clock::Processor,
                   {{"read/" + name, [&] { Keep(ReadOneAfterAnother(card)); }},
                    {"parse/" + name, [&] { ParseBare(context.get(), documents); }},
                    scan.Measured("load/" + name),
                    bareScan.Measured("clips_only/" + name)});
    MeasureSteps(bench, name, card, documents);
    bench.Value("held/" + name, [&] { return MemoryOfClip(card); });
}

void MeasureAll(Bench& bench) {
    const std::vector<std::string>& arguments = bench.Arguments();
    for (std::size_t i = 0; i + 2 < arguments.size(); i += 3) {
        MeasureCard(bench, arguments[i], arguments[i + 1], arguments[i + 2]);
    }
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    return nqp2::bench::Main(argc, argv, 3, "{NAME CARD CLIPS-ONLY}...", nqp2::bench::MeasureAll);
}
