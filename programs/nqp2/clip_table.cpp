// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_table.h"

#include "console/console.h"
#include "console/table.h"
#include "nqp2/clip_cells.h"
#include "nqp2/clip_fields.h"
#include "NQP2ParserU/ClipTimes.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace nqp2::tool {

std::string LengthText(std::int32_t frames, const CString& rate) {
    const FrameRate* known = FindFrameRate(rate);
    if (known == nullptr || frames < 0) {
        return fmt::format("{} frames", frames);
    }
    const std::int32_t nominal = known->Nominal();
    const std::int32_t seconds = frames / nominal;
    return fmt::format("{}:{:02}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60,
                       frames % nominal);
}

std::string LengthText(const _tag_P2Clip& clip) {
    return LengthText(clip.Duration, clip.FrameRate);
}

double RunningSeconds(const _tag_P2Clip& clip) {
    const FrameRate* rate = FindFrameRate(clip.FrameRate);
    return rate == nullptr || clip.Duration < 0 ? 0.0 : clip.Duration / rate->PerSecond();
}

std::string SecondsText(double seconds) {
    const auto whole = static_cast<std::int64_t>(std::llround(seconds));
    return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

namespace {

using Clip = _tag_P2Clip;

struct ClipColumn {
    Column column;
    std::string (*cell)(const Clip&);
};

template <auto Member>
std::string Text(const Clip& clip) {
    return BytesFromText(clip.*Member);
}

std::string AudioChannelsText(const Clip& clip) {
    return fmt::format("{}", AudioChannels(clip));
}

std::string Start(const Clip& clip) {
    CString start = clip.StartDate;
    start.Replace(L"T", L" ");
    return BytesFromText(start);
}

/// "P" for a proxy file, "M3" for three memos.
std::string Marks(const Clip& clip) {
    const bool hasProxy = !clip.ProxyPath.IsEmpty() || !clip.Proxy.ProxyFilePath.IsEmpty();
    std::string marks = hasProxy ? "P" : "";
    if (!clip.Memos.IsEmpty()) {
        marks += fmt::format("{}M{}", hasProxy ? " " : "", clip.Memos.GetSize());
    }
    return marks;
}

const ClipColumn kTitleColumn = {{"TITLE", Align::Left, 24}, OwnTitle};

/// On a narrow terminal the last go first.
std::vector<ClipColumn> ColumnsFor(const ClipOrder& clips) {
    std::vector<ClipColumn> columns = {
        {{"CLIP", Align::Left, 0}, Text<&Clip::ClipName>},
        {{"START", Align::Left}, Start},
        {{"LENGTH", Align::Right, 0}, LengthText},
        {{"CODEC", Align::Left, 12, 1}, CodecAndClass},
        {{"RATE", Align::Left, 0, 2}, Text<&Clip::FrameRate>},
        {{"MARK", Align::Left, 0, 3}, Marks},
        {{"CH", Align::Right, 0, 4}, AudioChannelsText},
        {{"RATIO", Align::Left, 0, 5}, Text<&Clip::AspectRatio>},
    };
    const auto titled = [](const Clip* clip) { return !OwnTitle(*clip).empty(); };
    if (std::any_of(clips.begin(), clips.end(), titled)) {
        columns.insert(columns.begin() + 1, kTitleColumn);
    }
    return columns;
}

std::string Summary(const ClipOrder& clips) {
    double seconds = 0.0;
    for (const Clip* clip : clips) {
        seconds += RunningSeconds(*clip);
    }
    return fmt::format("{} clip{}, {}", clips.size(), clips.size() == 1 ? "" : "s",
                       SecondsText(seconds));
}

} // namespace

void PrintClipTable(Console& console, const ClipOrder& clips, const CardOfClip& card) {
    const std::vector<ClipColumn> columns = ColumnsFor(clips);
    std::vector<Column> heads;
    if (card) {
        heads.push_back({"CARD", Align::Left, 12});
    }
    const auto first = static_cast<std::ptrdiff_t>(heads.size());
    for (const ClipColumn& column : columns) {
        heads.push_back(column.column);
    }
    PrintTable(console, heads, [&](const TakeRow& take) {
        Row row(heads.size());
        for (std::size_t i = 0; i < clips.size(); ++i) {
            FetchAhead(clips, i);
            if (card) {
                row.front() = card(*clips[i]);
            }
            std::transform(columns.begin(), columns.end(), row.begin() + first,
                           [&](const ClipColumn& column) { return column.cell(*clips[i]); });
            take(row);
        }
    });
    console.Finish();
    console.Message(Summary(clips));
}

} // namespace nqp2::tool
