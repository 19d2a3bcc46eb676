// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/catalogue_output.h"

#include "catalogue/catalogue_json.h"
#include "catalogue/medium.h"
#include "console/byte_size.h"
#include "console/progress_bar.h"
#include "console/run_progress.h"
#include "console/table.h"

#include <fmt/core.h>

#include <algorithm>

namespace nqp2::catalogue {
namespace {

std::string Names(const std::vector<ClipPlace>& places) {
    std::string names;
    for (const ClipPlace& place : places) {
        names += (names.empty() ? "" : ", ") + NameOf(place.card);
    }
    return names;
}

} // namespace

std::string GapText(const KnownGap& known) {
    const GapRecord& gap = known.gap;
    const bool isFile = gap.kind == "file";
    std::string text = fmt::format("{} {} is {}", isFile ? "file" : "segment",
                                   isFile             ? PathOfStored(gap.what)
                                   : gap.what.empty() ? "of its take"
                                                      : gap.what,
                                   gap.problem);
    if (!known.places.empty()) {
        text += ": it is on " + Names(known.places);
    } else if (!gap.serial.empty()) {
        text += fmt::format(": it is on the card {}, which was never seen", gap.serial);
    }
    return text;
}

std::string NameOf(std::int64_t card, const std::string& label) {
    return label.empty() ? fmt::format("card {}", card) : fmt::format("card {} ({})", card, label);
}

std::string NameOf(const CardRecord& card) {
    return NameOf(card.id, card.label.empty() ? card.serial : card.label);
}

void PrintCards(tool::Console& console, const std::vector<CardRecord>& cards) {
    const std::vector<tool::Column> columns = {{"Card", tool::Align::Right},
                                               {"Label", tool::Align::Left, 8},
                                               {"Serial"},
                                               {"Kind"},
                                               {"Is"},
                                               {"Clips", tool::Align::Right},
                                               {"Size", tool::Align::Right},
                                               {"Seen"},
                                               {"Path", tool::Align::Left, 16}};
    tool::PrintTable(console, columns, [&](const tool::TakeRow& take) {
        for (const CardRecord& card : cards) {
            take({std::to_string(card.id), card.label, card.serial, card.kind,
                  card.isMedium != 0 ? "card" : "folder", std::to_string(card.clips),
                  tool::BytesText(static_cast<std::uint64_t>(card.bytes)), DateText(card.seen),
                  fmt::format("{}:{}", card.host, PathOfStored(card.place))});
        }
    });
}

void PrintClips(tool::Console& console, const std::vector<FoundClip>& clips) {
    const std::vector<tool::Column> columns = {{"Name"},
                                               {"Title", tool::Align::Left, 12},
                                               {"Start"},
                                               {"Duration", tool::Align::Right},
                                               {"Codec"},
                                               {"Place", tool::Align::Left, 8},
                                               {"On", tool::Align::Left, 10}};
    tool::PrintTable(console, columns, [&](const tool::TakeRow& take) {
        for (const FoundClip& each : clips) {
            take({each.clip.name, each.clip.title, each.clip.start,
                  tool::TimeText(static_cast<double>(each.clip.milliseconds) / 1000),
                  each.clip.codec, each.clip.place, Names(each.places)});
        }
    });
    for (const FoundClip& each : clips) {
        for (const KnownGap& gap : each.gaps) {
            console.WriteLine(each.clip.name + ": " + GapText(gap));
        }
    }
}

} // namespace nqp2::catalogue
