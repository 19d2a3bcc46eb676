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
#include "nqp2/clip_showing.h"
#include "nqp2/scan_report_output.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>

namespace nqp2::tool {
namespace {

/// What was asked for only in order to find clips that are not whole is not shown.
ShownClip ShownIn(const ClipListing& listing, ShownClip shown) {
    shown.files = listing.showsFiles ? shown.files : nullptr;
    return shown;
}

/// Those between are for the others.
constexpr std::size_t kLikelyThreads = 2;

using PutJson = void (*)(ValueSink& sink, const ShownClip& shown);

/// One clip after the other as JSON, each without what would separate it from those before.
PutClipAt JsonInto(const ClipListing& listing, OutputText& text, PutJson put,
                   std::string_view end = "") {
    const auto json = std::make_shared<JsonWriter>(text);
    return [&listing, &text, json, put, end](const ShownClip& shown, std::size_t index) {
        FetchAhead(listing.clips, index, kLikelyThreads);
        json->BeginAnew();
        put(*json, ShownIn(listing, shown));
        text.Put(end);
    };
}

/// A form whose clips stand one after the other, wherever they are put.
ClipForm FormOfLines(OutputText& out, const std::function<PutClipAt(OutputText& text)>& into,
                     bool hasPaths = false) {
    return {into(out), into, [&out](std::string_view text) { out.Put(text); }, hasPaths};
}

void PutClips(JsonDocumentWriter& json, const ClipListing& listing) {
    json.BeginList(ListOf::Records);
    ShowClips(listing.details, listing.clips,
              {[&](const ShownClip& shown, std::size_t index) {
                   FetchAhead(listing.clips, index);
                   PutShownClip(json, ShownIn(listing, shown));
               },
               [&](OutputText& text) { return JsonInto(listing, text, PutShownClip); },
               [&json](std::string_view text) { json.PutElement(text); }, true});
    json.EndList();
}

void PutMembers(ValueSink& sink, const Record& members) {
    for (const NamedValue& member : members) {
        sink.Name(member.name);
        Put(sink, member.value);
    }
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
    Record record = {{"root", root},
                     {"kind", KindName(scan.kind)},
                     {"serialNo", BytesFromText(scan.serialNo)},
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

Record BeforeClips(const ClipListing& listing) {
    Record members = {{"format", std::string(kFormat)}, {"version", kJsonVersion}};
    if (!listing.areSeveral) {
        const CardScan& only = listing.cards.cards.front();
        members.push_back({"card", OutputPath(only.card.Folder())});
        members.push_back({"kind", std::string(only.kind == CardKind::P2 ? "p2" : "avchd")});
    }
    members.push_back({"cards", CardSequence(listing)});
    return members;
}

Record BehindClips(const ClipListing& listing) {
    Record members;
    if (listing.showsReport) {
        members.push_back({"skipped", SkippedValue(listing.cards)});
        members.push_back({"takes", TakesValue(listing.details.Takes())});
    }
    if (listing.showsReport || listing.showsFiles) {
        members.push_back({"incompleteClips", BrokenClips(listing)});
    }
    if (listing.showsFiles) {
        members.push_back({"otherFiles", OtherFiles(listing)});
    }
    return members;
}

} // namespace

void PrintClipsDocument(Console& console, const ClipListing& listing) {
    OutputText out(&console);
    JsonDocumentWriter json(out);
    json.BeginRecord();
    PutMembers(json, BeforeClips(listing));
    json.Name("clips");
    PutClips(json, listing);
    PutMembers(json, BehindClips(listing));
    json.EndRecord();
    out.Flush();
}

void PrintClipLines(Console& console, const ClipListing& listing) {
    OutputText out(&console);
    const auto into = [&listing](OutputText& text) {
        return JsonInto(listing, text, PutClipLine, "\n");
    };
    ShowClips(listing.details, listing.clips, FormOfLines(out, into, true));
    out.Flush();
}

void PrintCsvColumns(Console& console, const ClipListing& listing, const ClipColumns& columns) {
    OutputText out(&console);
    const auto putRow = [](OutputText& text, const Row& cells) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            text.Put(OutputText::Comma{i > 0});
            PutCell(text, cells[i]);
        }
        text.Put("\r\n");
    };
    Row titles;
    for (const Column& head : columns.Heads()) {
        titles.push_back(head.title);
    }
    putRow(out, titles);
    const auto into = [&](OutputText& text) -> PutClipAt {
        return [&](const ShownClip& shown, std::size_t /*index*/) {
            putRow(text, columns.Cells(shown));
        };
    };
    ShowClips(listing.details, listing.clips, FormOfLines(out, into));
    out.Flush();
}

void PrintTableColumns(Console& console, const ClipListing& listing, const ClipColumns& columns) {
    // A table goes over them twice, and clips are read once.
    std::vector<Row> rows(listing.clips.size());
    const PutClipAt put = [&](const ShownClip& shown, std::size_t index) {
        rows[index] = columns.Cells(shown);
    };
    ShowClips(
        listing.details, listing.clips,
        {put, [&put](OutputText& /*text*/) { return put; }, [](std::string_view /*text*/) {}});
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
            tell(fmt::format("no clip's {}: {}", LooseName(file), RealPath(file.path)));
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
