// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_document.h"

#include "console/console.h"
#include "console/csv_row.h"
#include "console/json_form.h"
#include "console/json_writer.h"
#include "console/output_text.h"
#include "nqp2/card.h"
#include "nqp2/clip_columns.h"
#include "nqp2/clip_fields.h"
#include "nqp2/clip_file_fields.h"
#include "nqp2/scan_report_output.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <filesystem>
#include <optional>
#include <system_error>

namespace nqp2::tool {
namespace {

/// What was asked for only in order to find clips that are not whole is not shown.
ShownClip ShownIn(const ClipListing& listing, std::size_t index) {
    ShownClip shown = listing.details.Of(*listing.clips[index]);
    shown.files = listing.showsFiles ? shown.files : nullptr;
    return shown;
}

Sequence ClipSequence(const ClipListing& listing) {
    return {listing.clips.size(), [&listing](ValueSink& sink, std::size_t index) {
                FetchAhead(listing.clips, index);
                PutShownClip(sink, ShownIn(listing, index));
            }};
}

constexpr const char* kFormat = "nqp2-clips";

std::string KindName(CardKind kind) {
    switch (kind) {
    case CardKind::P2:
        return "p2";
    case CardKind::Camera:
        return "camera";
    default:
        return "avchd";
    }
}

Record CardRecord(const CardScan& scan, bool withVolume) {
    const std::string root = OutputPath(scan.card.Folder());
    const std::optional<FoundCard>& found = scan.card.Found();
    Record record = {{"root", root},
                     {"kind", KindName(scan.kind)},
                     {"serialNo", found ? BytesFromText(found->serialNo) : ""},
                     {"clips", scan.clips.GetSize()}};
    std::error_code error;
    const std::filesystem::space_info space =
        withVolume ? std::filesystem::space(root, error) : std::filesystem::space_info();
    if (withVolume && !error) {
        record.push_back(
            {"volume", Record{{"bytes", space.capacity}, {"freeBytes", space.available}}});
    }
    return record;
}

Sequence CardSequence(const ClipListing& listing) {
    return {listing.cards.cards.size(), [&listing](ValueSink& sink, std::size_t index) {
                Put(sink, CardRecord(listing.cards.cards[index], listing.showsReport));
            }};
}

Content BrokenClips(const ClipListing& listing) {
    return [&listing](ValueSink& sink) {
        sink.BeginList(ListOf::Records);
        for (const BrokenClip& broken : listing.details.Broken(listing.clips)) {
            sink.BeginRecord();
            sink.Name("card");
            sink.Put(broken.card);
            sink.Name("clip");
            sink.Put(broken.name);
            sink.Name("files");
            PutFiles(sink, broken.files);
            sink.EndRecord();
        }
        sink.EndList();
    };
}

Content OtherFiles(const ClipListing& listing) {
    return [&listing](ValueSink& sink) {
        sink.BeginList(ListOf::Records);
        for (const LooseFile& file : listing.details.OtherFiles(listing.clips)) {
            PutLooseFile(sink, file);
        }
        sink.EndList();
    };
}

} // namespace

Record ClipsDocument(const ClipListing& listing) {
    Record document = {{"format", std::string(kFormat)}, {"version", kJsonVersion}};
    if (!listing.areSeveral) {
        const CardScan& only = listing.cards.cards.front();
        document.push_back({"card", OutputPath(only.card.Folder())});
        document.push_back({"kind", std::string(only.kind == CardKind::P2 ? "p2" : "avchd")});
    }
    document.push_back({"cards", CardSequence(listing)});
    document.push_back({"clips", ClipSequence(listing)});
    if (listing.showsReport) {
        document.push_back({"skipped", SkippedValue(listing.cards)});
        document.push_back({"takes", TakesValue(listing.details.Takes())});
    }
    if (listing.showsReport || listing.showsFiles) {
        document.push_back({"incompleteClips", BrokenClips(listing)});
    }
    if (listing.showsFiles) {
        document.push_back({"otherFiles", OtherFiles(listing)});
    }
    return document;
}

void PrintClipLines(Console& console, const ClipListing& listing) {
    OutputText out(&console);
    for (std::size_t i = 0; i < listing.clips.size(); ++i) {
        FetchAhead(listing.clips, i);
        JsonWriter line(out);
        PutClipLine(line, ShownIn(listing, i));
        out.Put('\n');
    }
    out.Flush();
}

void PrintCsvColumns(Console& console, const ClipListing& listing, const ClipColumns& columns) {
    OutputText out(&console);
    const auto putRow = [&out](const Row& cells) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            out.Put(OutputText::Comma{i > 0});
            PutCell(out, cells[i]);
        }
        out.Put("\r\n");
    };
    Row titles;
    for (const Column& head : columns.Heads()) {
        titles.push_back(head.title);
    }
    putRow(titles);
    for (const _tag_P2Clip* const clip : listing.clips) {
        putRow(columns.Cells(listing.details.Of(*clip)));
    }
    out.Flush();
}

void PrintTableColumns(Console& console, const ClipListing& listing, const ClipColumns& columns) {
    std::vector<Row> rows; // a table goes over them twice, and clips are read once
    for (const _tag_P2Clip* const clip : listing.clips) {
        rows.push_back(columns.Cells(listing.details.Of(*clip)));
    }
    PrintTable(console, columns.Heads(), [&rows](const TakeRow& take) {
        for (const Row& row : rows) {
            take(row);
        }
    });
}

void ForEachFileLine(const ClipListing& listing,
                     const std::function<void(const std::string& line)>& tell) {
    for (const BrokenClip& broken : listing.details.Broken(listing.clips)) {
        for (const ClipFile& file : broken.files) {
            tell(fmt::format("clip {} is not whole: {}", BytesFromText(broken.name),
                             FaultText(file)));
        }
    }
    if (listing.showsFiles) {
        for (const LooseFile& file : listing.details.OtherFiles(listing.clips)) {
            tell(fmt::format("no clip's file: {}", RealPath(file.path)));
        }
    }
}

void ForEachRemarkLine(const ClipListing& listing,
                       const std::function<void(const std::string& line)>& tell) {
    for (const RemarkedClip& clip : listing.details.Remarked(listing.clips)) {
        for (const std::string& remark : clip.remarks) {
            tell(fmt::format("clip {}: {}", BytesFromText(clip.name), remark));
        }
    }
}

} // namespace nqp2::tool
