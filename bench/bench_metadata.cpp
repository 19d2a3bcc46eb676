// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Measures what is read of a card beside its records: all metadata and all files of each clip.
//
//     bench_metadata {NAME CARD}...

#include "bench/measure.h"
#include "bench/plain_read.h"
#include "bench/scan.h"
#include "NQP2ParserU/ClipFiles.h"
#include "NQP2ParserU/ClipMetadata.h"

#include <cstddef>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace nqp2::bench {
namespace {

void ReadMetadata(const CArray<_tag_P2Clip>& clips) {
    ClipMetadataReader reader;
    ClipMetadata metadata;
    CString problem;
    for (const _tag_P2Clip& clip : clips) {
        Require(reader.Read(clip, metadata, problem) == MetadataStatus::Read, "no metadata");
    }
}

/// All that are there, as paths of the system.
std::vector<std::string> ReadFiles(ClipFileReader& reader, const CArray<_tag_P2Clip>& clips,
                                   bool keeps) {
    CArray<ClipFile> files;
    std::vector<std::string> paths;
    for (const _tag_P2Clip& clip : clips) {
        Require(reader.Read(clip, files), "no files");
        for (std::int64_t i = 0; keeps && i < files.GetSize(); ++i) {
            if (files[i].state != ClipFileState::Missing) {
                paths.push_back(PosixPath(files[i].path));
            }
        }
    }
    return paths;
}

/// As a program that wants both does it: the reader hears what the scan learns.
void ScanWithFiles(ReadyParser& parser, const CString& root, CArray<_tag_P2Clip>& clips) {
    ClipFileReader reader(root);
    ScanReport report;
    report.files = &reader;
    Require(parser->LoadClipEx(root, clips, 0, report) == 0, "the card was not scanned");
    ReadFiles(reader, clips, false);
}

void AskForEach(const std::vector<std::string>& paths) {
    struct stat facts = {};
    for (const std::string& path : paths) {
        Require(stat(path.c_str(), &facts) == 0, "a file is gone");
    }
}

void MeasureCard(Bench& bench, const std::string& name, const std::string& card) {
    const CString root = InterfaceRoot(card);
    CardScan scan(card);
    CardScan kept(card);
    kept.Run();
    ClipFileReader first(root);
    const std::vector<std::string> paths = ReadFiles(first, kept.Clips(), true);
    ReadyParser parser;
    CArray<_tag_P2Clip> clips;
    bench.Together(Clock::Processor, {scan.Measured("load/" + name),
                                      {"read/" + name, [&] { ReadMetadata(kept.Clips()); }},
                                      {"files/" + name,
                                       [&] {
                                           ClipFileReader reader(root);
                                           ReadFiles(reader, kept.Clips(), false);
                                       }},
                                      {"scanned_files/" + name,
                                       [&] { ScanWithFiles(parser, root, clips); },
                                       {},
                                       [&] { clips = {}; }},
                                      {"asked/" + name, [&] { AskForEach(paths); }}});
}

void MeasureAll(Bench& bench) {
    const std::vector<std::string>& arguments = bench.Arguments();
    for (std::size_t i = 0; i + 1 < arguments.size(); i += 2) {
        MeasureCard(bench, arguments[i], arguments[i + 1]);
    }
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    return nqp2::bench::Main(argc, argv, 2, "{NAME CARD}...", nqp2::bench::MeasureAll);
}
