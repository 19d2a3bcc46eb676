// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Measures edit lists, ingest lists and capacity beside the least work that each can be compared
// with. The lists are made in a scratch folder; bench/run_bench.py works out the ratios.

#include "bench/measure.h"
#include "bench/plain_read.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/ReadyParser.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <memory>
#include <stdexcept>
#include <string>

namespace nqp2::bench {
namespace {

namespace fs = std::filesystem;

constexpr int kEventsOfList = 20;
constexpr int kEventsOfLongList = 10000;
constexpr const char* kEditNamespace = "urn:schemas-Professional-Plug-in:P2:EditMetadata:v2.0";
constexpr const char* kIdentifier =
    "060A2B340101010501010D43130000000BB3982AB17F015AD222F86283B7EE93";

void Write(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

/// A card whose one clip is what edit lists refer to.
void MakeReferenceClip(const fs::path& card) {
    Write(card / "CONTENTS/CLIP/0001AA.XML",
          std::string("<P2Main><ClipContent><ClipName>0001AA</ClipName><GlobalClipID>") +
              kIdentifier +
              "</GlobalClipID><EditUnit>1/25</EditUnit><EssenceList><Video>"
              "<Codec>DV50_422</Codec><FrameRate>50i</FrameRate></Video></EssenceList>"
              "</ClipContent></P2Main>");
}

tag_P2EDL MakeEditList(int events) {
    tag_P2EDL edl;
    for (int i = 0; i < events; ++i) {
        tag_P2EDLClipTrackEvent event;
        event.Offset = i * 50;
        event.Duration = 50;
        event.P2SerialNo = L"SMP24E0001";
        event.ClipName = L"0001AA";
        event.GlobalClipID = CString(L"060A2B340101010501010D4313000000"
                                     L"0BB3982AB17F015AD222F86283B7EE93");
        event.GlobalClipGuid = CNQP2Parser::GuidFromUMID(event.GlobalClipID);
        event.SourceOffset = i;
        edl.Events.Add(event);
    }
    edl.Duration = events * 50;
    return edl;
}

/// A card of that many edit lists, each a copy of one that the library wrote.
fs::path CardOfLists(const fs::path& scratch, int lists) {
    const fs::path card = scratch / ("lists-" + std::to_string(lists));
    const fs::path folder = card / "EDITLIST";
    if (fs::exists(card / "made")) {
        return card;
    }
    MakeReferenceClip(card);
    ReadyParser parser;
    if (parser->SaveToEdl(InterfaceRoot(card.string()), MakeEditList(kEventsOfList), 1, L"FIRST") !=
        0) {
        throw std::runtime_error("the first edit list cannot be written");
    }
    for (int i = 0; i < lists; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "P%05dAB.XML", i);
        fs::copy_file(folder / "FIRST.xml", folder / name, fs::copy_options::overwrite_existing);
    }
    fs::remove(folder / "FIRST.xml");
    Write(card / "made", "");
    return card;
}

void ListFloor(benchmark::State& state, const fs::path& card) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(ReadFolder(card.string() + "/EDITLIST/"));
    }
}

void LoadLists(benchmark::State& state, const fs::path& card, std::int64_t expected) {
    ReadyParser parser;
    for (auto _ : state) {
        CArray<tag_P2EDL> edls;
        const bool loaded = parser->LoadEdl(InterfaceRoot(card.string()), edls) == 0;
        state.PauseTiming(); // the records are the host's to destroy
        const bool complete = loaded && edls.GetSize() == expected;
        edls.RemoveAll();
        state.ResumeTiming();
        if (!complete) {
            state.SkipWithError("not all edit lists were loaded");
            return;
        }
    }
}

xmlNodePtr Child(xmlNodePtr parent, const char* name, const char* text = nullptr) {
    return xmlNewTextChild(parent, nullptr, BAD_CAST name, BAD_CAST text);
}

/// The tree of an edit list with libxml2 alone.
void SaveFloor(benchmark::State& state, const fs::path& scratch) {
    const std::string path = (scratch / "floor.xml").string();
    for (auto _ : state) {
        const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(xmlNewDoc(BAD_CAST "1.0"),
                                                                      xmlFreeDoc);
        const xmlNodePtr root = xmlNewNode(nullptr, BAD_CAST "P2Main");
        xmlDocSetRootElement(document.get(), root);
        xmlNewNs(root, BAD_CAST kEditNamespace, nullptr);
        const xmlNodePtr content = Child(root, "EditContent");
        Child(content, "Duration", "500000");
        const xmlNodePtr list = Child(Child(Child(content, "TrackList"), "ClipTrack"), "EventList");
        for (int i = 0; i < kEventsOfLongList; ++i) {
            const xmlNodePtr event = Child(list, "Event");
            Child(event, "Offset", std::to_string(i * 50).c_str());
            Child(event, "Duration", "50");
            const xmlNodePtr source = Child(event, "Source");
            Child(source, "P2SerialNo.", "SMP24E0001");
            Child(source, "ClipName", "0001AA");
            Child(source, "GlobalClipID", kIdentifier);
            Child(source, "Offset", std::to_string(i).c_str());
            Child(source, "InTimecode", "00:00:00:00");
            Child(source, "OutTimecode", "00:00:01:24");
        }
        if (xmlSaveFileEnc(path.c_str(), document.get(), "UTF-8") < 0) {
            state.SkipWithError("the floor cannot be saved");
            return;
        }
    }
}

void SaveList(benchmark::State& state, const fs::path& scratch) {
    const fs::path card = scratch / "long";
    MakeReferenceClip(card);
    const tag_P2EDL edl = MakeEditList(kEventsOfLongList);
    ReadyParser parser;
    for (auto _ : state) {
        if (parser->SaveToEdl(InterfaceRoot(card.string()), edl, 1, L"LONG") != 0) {
            state.SkipWithError("the edit list cannot be saved");
            return;
        }
    }
}

/// Adds one segment to each of `clips` clips that are listed already.
void AddToIngest(benchmark::State& state, const fs::path& scratch, int clips) {
    const fs::path card = scratch / ("ingest-" + std::to_string(clips));
    fs::remove_all(card);
    fs::create_directories(card);
    IngestClips marks;
    for (int i = 0; i < clips; ++i) {
        CString name;
        name.Format(L"%06d", i);
        marks[name].push_back({0, 100});
    }
    IngestRequest request{{InterfaceRoot(card.string()), marks}};
    ReadyParser parser;
    parser->WriteIngestXML(L"Ingest.xml", request);
    const fs::path file = card / "USERDATA/Ingest.xml";
    const fs::path start = card / "start.xml";
    fs::copy_file(file, start);
    for (auto _ : state) {
        if (parser->WriteIngestXML(L"Ingest.xml", request) != 0) {
            state.SkipWithError("the ingest list cannot be written");
            return;
        }
        state.PauseTiming(); // each pass meets the same list
        fs::copy_file(start, file, fs::copy_options::overwrite_existing);
        state.ResumeTiming();
    }
}

void Capacity(benchmark::State& state) {
    CNQP2Parser parser;
    __int64 size = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            parser.GetMaxFrameBy4GBSize(CT_AVCI50_720_5994P, 0, VS_5994P, size));
    }
}

void Register(const std::string& folder) {
    const fs::path scratch = folder;
    const auto measure = [](const std::string& name, auto run) {
        benchmark::RegisterBenchmark(name.c_str(), run)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    };
    for (const int lists : {100, 1000, 10000}) {
        const fs::path card = CardOfLists(scratch, lists);
        const std::string count = std::to_string(lists);
        measure("list_floor/" + count, [card](auto& state) { ListFloor(state, card); });
        measure("load_lists/" + count,
                [card, lists](auto& state) { LoadLists(state, card, lists); });
    }
    measure("save_floor", [scratch](auto& state) { SaveFloor(state, scratch); });
    measure("save_list", [scratch](auto& state) { SaveList(state, scratch); });
    for (const int clips : {1000, 10000}) {
        measure("ingest/" + std::to_string(clips),
                [scratch, clips](auto& state) { AddToIngest(state, scratch, clips); });
    }
    measure("capacity", [](auto& state) { Capacity(state); });
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    return nqp2::bench::RunOnEach(argc, argv, nqp2::bench::Register);
}
