// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/catalogue_json.h"
#include "catalogue/commands.h"
#include "catalogue/medium.h"
#include "console/console.h"
#include "console/csv_row.h"
#include "console/json_writer.h"
#include "console/output_text.h"

#include <cstdint>

namespace nqp2::catalogue {
namespace {

constexpr std::int64_t kClipsAtOnce = 500;

/// A row a clip and card, of the columns that both have in the catalogue.
class CsvExport {
public:
    explicit CsvExport(tool::OutputText& out) : m_out(out) {
        tool::CsvRow row(m_out);
        row.Put(std::string_view("card"));
        for (const auto& column : kPlaceColumns) {
            row.Put(std::string_view(column.name));
        }
        for (const auto& column : Columns()) {
            row.Put(std::string_view(column.name));
        }
        m_out.Put('\n');
    }

    void Put(const FoundClip& clip) {
        for (const ClipPlace& place : clip.places) {
            tool::CsvRow row(m_out);
            row.Put(place.card.id);
            for (const auto& column : kPlaceColumns) {
                row.Put(std::string_view(column.text(place)));
            }
            for (const auto& column : Columns()) {
                std::visit([&](auto member) { PutCell(row, clip.clip.*member); }, column.member);
            }
            m_out.Put('\n');
        }
    }

private:
    static void PutCell(tool::CsvRow& row, const std::string& text) {
        row.Put(std::string_view(text));
    }
    static void PutCell(tool::CsvRow& row, std::int64_t number) { row.Put(number); }
    static std::span<const Column<ClipRecord>> Columns() {
        return std::span(kClipColumns).first(std::size(kClipColumns) - 1);
    }

    static constexpr struct {
        const char* name;
        std::string (*text)(const ClipPlace&);
    } kPlaceColumns[] = {
        {"label", [](const ClipPlace& place) { return place.card.label; }},
        {"serial", [](const ClipPlace& place) { return place.card.serial; }},
        {"host", [](const ClipPlace& place) { return place.card.host; }},
        {"path", [](const ClipPlace& place) { return PathOfStored(place.card.place); }},
        {"clip_on_card", [](const ClipPlace& place) { return place.holding.name; }},
    };

    tool::OutputText& m_out;
};

void PutLine(tool::OutputText& out, const FoundClip& clip) {
    tool::JsonWriter writer(out);
    tool::Put(writer, tool::Value(Document("nqp2-catalog-clip", ClipValue(clip))));
    out.Put('\n');
}

} // namespace

tool::Status RunExport(tool::Console& console, Connection& connection, const Arguments& arguments) {
    tool::OutputText out(&console);
    std::optional<CsvExport> csv;
    if (arguments.csv) {
        csv.emplace(out);
    }
    std::int64_t behind = 0;
    for (;;) {
        const std::vector<FoundClip> clips = ClipsBehind(connection, behind, kClipsAtOnce);
        for (const FoundClip& clip : clips) {
            if (csv) {
                csv->Put(clip);
            } else {
                PutLine(out, clip);
            }
        }
        if (clips.empty()) {
            break;
        }
        behind = clips.back().id;
    }
    out.Flush();
    return tool::kDone;
}

} // namespace nqp2::catalogue
