// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Measures edit lists: reading many beside a plain reading of the same files, writing a long one
// beside libxml2 alone. The lists are made in a scratch folder.
//
//     bench_edit_lists FOLDER EVENTS LISTS...

#include "bench/measure.h"
#include "bench/plain_read.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/ReadyParser.h"

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <libxml/tree.h>
#include <memory>
#include <string>

namespace nqp2::bench {
namespace {

namespace fs = std::filesystem;

constexpr int kEventsOfList = 20;
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
    Require(parser->SaveToEdl(InterfaceRoot(card.string()), MakeEditList(kEventsOfList), 1,
                              L"FIRST") == 0,
            "the first edit list cannot be written");
    for (int i = 0; i < lists; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "P%05dAB.XML", i);
        fs::copy_file(folder / "FIRST.xml", folder / name, fs::copy_options::overwrite_existing);
    }
    fs::remove(folder / "FIRST.xml");
    Write(card / "made", "");
    return card;
}

void MeasureReading(Bench& bench, const fs::path& scratch, int lists) {
    const std::string count = std::to_string(lists);
    if (!bench.Wants("load/" + count)) {
        return;
    }
    const std::string card = CardOfLists(scratch, lists).string();
    const CString root = InterfaceRoot(card);
    ReadyParser parser;
    CArray<tag_P2EDL> edls;
    const auto load = [&] {
        Require(parser->LoadEdl(root, edls) == 0 && edls.GetSize() == lists,
                "not all edit lists were loaded");
    };
    bench.Together(Clock::Processor,
                   {{"read/" + count, [&] { Keep(ReadFolder(card + "/EDITLIST/")); }},
                    {"load/" + count, load, {}, [&] { edls = {}; }}});
}

xmlNodePtr Child(xmlNodePtr parent, const char* name, const char* text = nullptr) {
    return xmlNewTextChild(parent, nullptr, BAD_CAST name, BAD_CAST text);
}

void AddEvent(xmlNodePtr list, int number) {
    const xmlNodePtr event = Child(list, "Event");
    Child(event, "Offset", std::to_string(number * 50).c_str());
    Child(event, "Duration", "50");
    const xmlNodePtr source = Child(event, "Source");
    Child(source, "P2SerialNo.", "SMP24E0001");
    Child(source, "ClipName", "0001AA");
    Child(source, "GlobalClipID", kIdentifier);
    Child(source, "Offset", std::to_string(number).c_str());
    Child(source, "InTimecode", "00:00:00:00");
    Child(source, "OutTimecode", "00:00:01:24");
}

/// The tree of an edit list with libxml2 alone.
void SaveBare(const std::string& path, int events) {
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(xmlNewDoc(BAD_CAST "1.0"),
                                                                  xmlFreeDoc);
    const xmlNodePtr root = xmlNewNode(nullptr, BAD_CAST "P2Main");
    xmlDocSetRootElement(document.get(), root);
    xmlNewNs(root, BAD_CAST kEditNamespace, nullptr);
    const xmlNodePtr content = Child(root, "EditContent");
    Child(content, "Duration", "500000");
    const xmlNodePtr list = Child(Child(Child(content, "TrackList"), "ClipTrack"), "EventList");
    for (int i = 0; i < events; ++i) {
        AddEvent(list, i);
    }
    Require(xmlSaveFileEnc(path.c_str(), document.get(), "UTF-8") >= 0, "not saved");
}

void MeasureWriting(Bench& bench, const fs::path& scratch, int events) {
    const fs::path card = scratch / "long";
    MakeReferenceClip(card);
    const CString root = InterfaceRoot(card.string());
    const tag_P2EDL edl = MakeEditList(events);
    ReadyParser parser;
    bench.Together(Clock::Processor,
                   {{"bare_save", [&] { SaveBare(scratch / "bare.xml", events); }},
                    {"save", [&] {
                         Require(parser->SaveToEdl(root, edl, 1, L"LONG") == 0,
                                 "the edit list cannot be saved");
                     }}});
}

void MeasureAll(Bench& bench) {
    const fs::path scratch = bench.Arguments().front();
    for (std::size_t i = 2; i < bench.Arguments().size(); ++i) {
        MeasureReading(bench, scratch, std::stoi(bench.Arguments()[i]));
    }
    if (bench.Wants("save")) {
        MeasureWriting(bench, scratch, std::stoi(bench.Arguments()[1]));
    }
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    return nqp2::bench::Main(argc, argv, 2, "FOLDER EVENTS LISTS...", nqp2::bench::MeasureAll);
}
