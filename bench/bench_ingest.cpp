// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Measures the ingest list beside libxml2 alone, which reads, changes and writes the same file, and
// the figures of capacity beside a division. The lists are made in a scratch folder.
//
//     bench_ingest FOLDER CLIPS...

#include "bench/measure.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/ReadyParser.h"

#include <array>
#include <cstddef>
#include <filesystem>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <memory>
#include <string>

namespace nqp2::bench {
namespace {

namespace fs = std::filesystem;

/// Adds a copy of each clip's first segment to the clip.
void AddCopies(xmlDoc* document, xmlNode* root) {
    for (xmlNode* clip = xmlFirstElementChild(root); clip != nullptr;
         clip = xmlNextElementSibling(clip)) {
        if (xmlNode* const last = xmlLastElementChild(clip); last != nullptr) {
            xmlAddChild(clip, xmlDocCopyNode(last, document, 1));
        }
    }
}

void MarkBare(const std::string& list, const std::string& target) {
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlReadFile(list.c_str(), nullptr, XML_PARSE_NONET | XML_PARSE_HUGE), xmlFreeDoc);
    Require(document != nullptr, "the ingest list does not parse");
    AddCopies(document.get(), xmlDocGetRootElement(document.get()));
    Require(xmlSaveFileEnc(target.c_str(), document.get(), "UTF-8") >= 0, "not saved");
}

IngestClips Marks(int clips) {
    IngestClips marks;
    for (int i = 0; i < clips; ++i) {
        CString name;
        name.Format(L"%06d", i);
        marks[name].push_back({0, 100});
    }
    return marks;
}

/// One segment more for each of `clips` clips that are listed already.
void MeasureIngest(Bench& bench, const fs::path& scratch, int clips) {
    const std::string count = std::to_string(clips);
    const fs::path card = scratch / ("ingest-" + count);
    fs::remove_all(card);
    fs::create_directories(card);
    IngestRequest request{{InterfaceRoot(card.string()), Marks(clips)}};
    ReadyParser parser;
    const auto mark = [&] {
        Require(parser->WriteIngestXML(L"Ingest.xml", request) == 0, "no ingest list is written");
    };
    mark();
    const fs::path file = card / "USERDATA/Ingest.xml";
    const fs::path start = card / "start.xml";
    fs::copy_file(file, start);
    const auto restore = [&] { // each pass meets the same list
        fs::copy_file(start, file, fs::copy_options::overwrite_existing);
    };
    bench.Together(Clock::Processor,
                   {{"bare/" + count, [&] { MarkBare(start.string(), card / "bare.xml"); }},
                    {"mark/" + count, mark, restore}});
}

/// The least that a figure of capacity takes: a call that looks up what a frame costs, divides by
/// it, writes one number and returns another.
[[gnu::noinline]] __int64 DivideAlone(std::size_t family, __int64& size) {
    constexpr __int64 kLimit = 4250912992;
    static constexpr std::array<__int64, 4> kFrameBytes = {120000, 144000, 240000, 480000};
    const __int64 bytes = kFrameBytes[family];
    const __int64 frames = kLimit / bytes;
    size = frames * bytes;
    return frames;
}

void MeasureCapacity(Bench& bench) {
    CNQP2Parser parser;
    __int64 size = 0;
    bench.Together(
        Clock::Processor,
        {{"capacity",
          [&] { Keep(parser.GetMaxFrameBy4GBSize(CT_AVCI50_720_5994P, 0, VS_5994P, size)); }},
         {"divide", [&] { Keep(DivideAlone(2, size)); }}});
}

void MeasureAll(Bench& bench) {
    for (std::size_t i = 1; i < bench.Arguments().size(); ++i) {
        MeasureIngest(bench, bench.Arguments().front(), std::stoi(bench.Arguments()[i]));
    }
    MeasureCapacity(bench);
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    return nqp2::bench::Main(argc, argv, 1, "FOLDER CLIPS...", nqp2::bench::MeasureAll);
}
