// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/byte_size.h"
#include "nqp2/report/sections.h"

#include "nqp2/clip_cells.h"
#include "nqp2/clip_table.h"
#include "nqp2/scan_report_output.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace nqp2::report {
namespace {

constexpr std::size_t kMostFormats = 3;

std::string BytesText(std::uint64_t bytes) {
    static constexpr const char* kUnits[] = {"bytes", "KB", "MB", "GB", "TB", "PB"};
    auto amount = static_cast<double>(bytes);
    std::size_t unit = 0;
    while (amount >= 1000 && unit + 1 < std::size(kUnits)) {
        amount /= 1000;
        ++unit;
    }
    return unit == 0 ? fmt::format("{} bytes", bytes)
                     : fmt::format("{:.{}f} {}", amount, amount < 10 ? 1 : 0, kUnits[unit]);
}

std::string FormatOf(const _tag_P2Clip& clip) {
    const std::string rate = BytesFromText(clip.FrameRate);
    return tool::CodecAndClass(clip) + (rate.empty() ? "" : fmt::format(" ({})", rate));
}

/// The formats of the clips, the most frequent first.
std::vector<std::string> Formats(const CardContents& card) {
    std::map<std::string, int> counts;
    for (const ClipContents& clip : card.clips) {
        ++counts[FormatOf(*clip.clip)];
    }
    std::vector<std::string> formats;
    for (const auto& [format, count] : counts) {
        formats.push_back(format);
    }
    std::stable_sort(formats.begin(), formats.end(),
                     [&](const std::string& left, const std::string& right) {
                         return counts[left] > counts[right];
                     });
    return formats;
}

std::string FormatsText(const CardContents& card) {
    const std::vector<std::string> formats = Formats(card);
    std::string text;
    for (std::size_t i = 0; i < std::min(formats.size(), kMostFormats); ++i) {
        text += (i == 0 ? "" : ", ") + formats[i];
    }
    const auto others =
        static_cast<std::int64_t>(formats.size()) - static_cast<std::int64_t>(kMostFormats);
    return others > 0 ? fmt::format("{} and {} more", text, others) : text;
}

std::string DayOf(const ClipContents& clip) {
    constexpr std::size_t kDayLength = 10;
    return clip.start.substr(0, kDayLength);
}

std::string DatesText(const CardContents& card) {
    std::string first;
    std::string last;
    for (const ClipContents& clip : card.clips) {
        const std::string day = DayOf(clip);
        if (!day.empty()) {
            first = first.empty() ? day : std::min(first, day);
            last = std::max(last, day);
        }
    }
    return first == last ? first : fmt::format("{} to {}", first, last);
}

std::string KindText(CardKind kind) {
    switch (kind) {
    case CardKind::P2:
        return "P2 card";
    case CardKind::Avchd:
        return "AVCHD";
    case CardKind::Camera:
        break;
    }
    return "Camera folder";
}

std::string LengthText(const CardContents& card) {
    double seconds = 0;
    for (const ClipContents& clip : card.clips) {
        seconds += tool::RunningSeconds(*clip.clip);
    }
    return tool::SecondsText(seconds);
}

std::int64_t IncompleteTakes(const PageContents& page, std::size_t card) {
    return std::count_if(page.takes.begin(), page.takes.end(), [&](const JoinedTake& take) {
        return !take.complete &&
               std::any_of(take.segments.begin(), take.segments.end(),
                           [&](const TakeSegment& segment) {
                               return segment.card == static_cast<std::int64_t>(card);
                           });
    });
}

/// What keeps the card from being whole, in words.
std::vector<std::string> Lacks(const PageContents& page, std::size_t index) {
    const CardContents& card = page.cards[index];
    const auto broken = std::count_if(card.clips.begin(), card.clips.end(),
                                      [](const ClipContents& clip) { return !IsWhole(clip); });
    std::vector<std::string> lacks;
    const auto add = [&](std::int64_t count, std::string_view what, std::string_view rest) {
        if (count > 0) {
            lacks.push_back(Counted(count, what) + std::string(rest));
        }
    };
    add(broken, "clip", " incomplete");
    add(IncompleteTakes(page, index), "take", " incomplete");
    const auto lists =
        std::count_if(card.skipped.begin(), card.skipped.end(), [](const SkippedFile& file) {
            return file.reason == SkipReason::MissingClip;
        });
    add(lists, "playlist", " with clips missing");
    add(tool::CountOfLosses(card.skipped) - lists, "file", " skipped");
    return lacks;
}

void PutState(Html& html, const std::vector<std::string>& lacks) {
    if (lacks.empty()) {
        html.Element("p", "state good", Own("Whole"));
        return;
    }
    html.Open("p").With("class", "state bad").Text("Not whole: ");
    for (std::size_t i = 0; i < lacks.size(); ++i) {
        html.Shown((i == 0 ? "" : " \xC2\xB7 ") + lacks[i]);
    }
    html.Close("p");
}

std::string WholeFolder(const tool::CardScan& scan) {
    return tool::OutputPath(scan.card.Folder());
}

std::string SpaceText(const CardContents& card) {
    return card.volumeBytes == 0
               ? ""
               : fmt::format("{} of {}", BytesText(card.freeBytes), BytesText(card.volumeBytes));
}

} // namespace

std::string NameOf(const tool::CardScan& scan) {
    static constexpr const wchar_t* kOfEveryCard[] = {L"BDMV", L"AVCHD", L"PRIVATE"};
    std::filesystem::path folder = WholeFolder(scan);
    for (const wchar_t* const name : kOfEveryCard) { // each in the next
        if (folder.parent_path().has_relative_path() &&
            TextFromBytes(folder.filename().native()).CompareNoCase(name) == 0) {
            folder = folder.parent_path();
        }
    }
    return folder.filename().native();
}

void PutCardHead(Html& html, const PageContents& contents, std::size_t index) {
    const CardContents& card = contents.cards[index];
    const tool::CardScan& scan = *card.scan;
    html.Open("header").With("class", "card-head");
    html.Open("h2").Foreign(NameOf(scan)).Close("h2");
    PutState(html, Lacks(contents, index));
    html.Open("dl");
    const FoundCard found = scan.card.Found() ? *scan.card.Found() : FoundCard();
    page::PutFact(html, "Kind", KindText(scan.kind));
    page::PutFact(html, "Volume", BytesFromText(found.label));
    page::PutFact(html, "Serial number", BytesFromText(scan.serialNo));
    page::PutFact(html, "Format", FormatsText(card));
    page::PutFact(html, "Clips", fmt::format("{}", card.clips.size()));
    page::PutFact(html, "Length", LengthText(card));
    page::PutFact(html, "Recorded", DatesText(card));
    page::PutFact(html, "Size", BytesText(card.bytes));
    page::PutFact(html, "Free", SpaceText(card));
    page::PutFact(html, "Folder", WholeFolder(scan));
    html.Close("dl").Close("header");
}

} // namespace nqp2::report
