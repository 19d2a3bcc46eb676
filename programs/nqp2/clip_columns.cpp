// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_columns.h"

#include "console/console.h"
#include "nqp2/clip_cells.h"
#include "nqp2/clip_fields.h"
#include "nqp2/clip_table.h"
#include "nqp2/field.h"
#include "nqp2/flat_fields.h"
#include "nqp2/near_name.h"
#include "NQP2ParserU/ClipTimes.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <numeric>

namespace nqp2::tool {
namespace {

std::string NameCell(const ShownClip& shown) {
    std::string title = OwnTitle(shown.clip);
    return title.empty() ? BytesFromText(shown.clip.ClipName) : title;
}
std::string CardCell(const ShownClip& shown) {
    return std::string(shown.cardLabel);
}
std::string StartCell(const ShownClip& shown) {
    return BytesFromText(TimecodeOf(shown));
}
bool HasLength(const ShownClip& shown) {
    return FindFrameRate(shown.clip.FrameRate) != nullptr && shown.clip.Duration >= 0;
}
std::string EndCell(const ShownClip& shown) {
    return HasLength(shown) ? BytesFromText(TimecodeOf(shown, shown.clip.Duration)) : "";
}
std::string DurationCell(const ShownClip& shown) {
    if (!HasLength(shown)) {
        return {};
    }
    const std::string text = LengthText(shown.clip); // as timecodes are: with two digits of hours
    return text.find(':') == 1 ? '0' + text : text;
}
/// "23.976", "29.97", "25": as many digits as are told apart by.
std::string FpsCell(const ShownClip& shown) {
    constexpr double kThousand = 1000;
    const FrameRate* const rate = FindFrameRate(shown.clip.FrameRate);
    return rate == nullptr
               ? ""
               : fmt::format("{}", std::round(rate->PerSecond() * kThousand) / kThousand);
}
std::string CodecCell(const ShownClip& shown) {
    return CodecAndClass(shown.clip);
}
std::string SizeCell(const ShownClip& shown) {
    if (shown.files == nullptr) {
        return {};
    }
    const auto size =
        std::accumulate(shown.files->begin(), shown.files->end(), std::uint64_t{0},
                        [](std::uint64_t sum, const ClipFile& file) { return sum + file.size; });
    return fmt::format("{}", size);
}
std::string ChannelsCell(const ShownClip& shown) {
    return fmt::format("{}", AudioChannels(shown.clip));
}
std::string DateCell(const ShownClip& shown) {
    constexpr int kDateLength = 10;
    return BytesFromText(StartOf(shown).Left(kDateLength));
}
std::string SceneCell(const ShownClip& shown) {
    return shown.metadata == nullptr ? "" : BytesFromText(shown.metadata->scenario.sceneNo);
}
std::string TakeCell(const ShownClip& shown) {
    return shown.metadata == nullptr ? "" : BytesFromText(shown.metadata->scenario.takeNo);
}
/// Of the picture; of the metadata where there is none.
std::string PathCell(const ShownClip& shown) {
    return OutputPath(shown.clip.VideoPath.IsEmpty() ? shown.clip.XmlPath : shown.clip.VideoPath);
}
std::string FileNameCell(const ShownClip& shown) {
    const std::string path = PathCell(shown);
    return path.substr(path.rfind('/') + 1);
}

struct BinColumn {
    const char* name;
    std::string (*text)(const ShownClip&);
    ClipReading reading = {};
    Align align = Align::Left;
};
constexpr BinColumn kBinColumns[] = {
    {"Name", NameCell},
    {"Card", CardCell},
    {"Start", StartCell},
    {"End", EndCell},
    {"Duration", DurationCell, {}, Align::Right},
    {"FPS", FpsCell, {}, Align::Right},
    {"Codec", CodecCell},
    {"Size", SizeCell, {false, true}, Align::Right},
    {"Channels", ChannelsCell, {}, Align::Right},
    {"Date", DateCell},
    {"Scene", SceneCell, {true, false}},
    {"Take", TakeCell, {true, false}},
    {"File Name", FileNameCell},
    {"Path", PathCell},
};

/// A clip of which everything is told, for the names of all members.
template <class Use>
auto WithSpecimen(Use use) {
    _tag_P2Clip clip;
    clip.StartDate = clip.EndDate = L"2000-01-01T00:00:00";
    clip.FrameRate = L"50i";
    JoinedTake take;
    const TakeSegment segment;
    take.segments.Add(segment);
    const ShownTake place = {&take, &segment};
    const ClipMetadata metadata;
    const CArray<ClipFile> files;
    const std::vector<std::string> remarks = {""};
    return use(ShownClip{clip, "", "", {}, &place, &metadata, &files, &remarks});
}

Content MembersOf(const ShownClip& shown) {
    return [&shown](ValueSink& sink) { PutShownClip(sink, shown); };
}

std::vector<std::string> MemberNames() {
    return WithSpecimen([&](const ShownClip& specimen) {
        std::vector<std::string> names;
        ForEachCell(MembersOf(specimen), [&](const std::string& member, const std::string&) {
            names.push_back(member);
        });
        return names;
    });
}

bool IsMember(const std::string& name) {
    const std::vector<std::string> names = MemberNames();
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::string NearColumn(const std::string& name) {
    std::vector<std::string> names = ColumnNames();
    const std::string near = NearName(name, names);
    return near.empty() ? NearName(name, MemberNames()) : near;
}

bool IsBelow(const std::string& name, const std::string& member) {
    return name == member || name.starts_with(member + '.');
}

std::vector<std::string> Split(const std::string& names) {
    std::vector<std::string> list;
    for (std::size_t start = 0; start <= names.size();) {
        const std::size_t end = std::min(names.find(',', start), names.size());
        list.push_back(names.substr(start, end - start));
        start = end + 1;
    }
    return list;
}

} // namespace

std::vector<std::string> ColumnNames() {
    std::vector<std::string> names;
    for (const BinColumn& column : kBinColumns) {
        names.emplace_back(column.name);
    }
    return names;
}

ClipColumns::ClipColumns(const std::string& names) {
    for (const std::string& name : Split(names)) {
        Add(name);
    }
}

void ClipColumns::Add(const std::string& name) {
    const auto* const bin = std::find_if(std::begin(kBinColumns), std::end(kBinColumns),
                                         [&](const BinColumn& row) { return row.name == name; });
    if (name == kDefaultColumns) {
        for (const BinColumn& column : kBinColumns) {
            Add(column.name);
        }
    } else if (bin != std::end(kBinColumns)) {
        m_heads.push_back({bin->name, bin->align, 0});
        m_sources.push_back({bin->text, {}});
        m_reading.metadata = m_reading.metadata || bin->reading.metadata;
        m_reading.files = m_reading.files || bin->reading.files;
    } else if (name == "all") {
        const Content fresh = [](ValueSink& sink) { PutClip(sink, {}); };
        ForEachCell(fresh, [this](const std::string& member, const auto&) { AddMember(member); });
    } else if (IsMember(name)) {
        AddMember(name);
    } else {
        const std::string near = NearColumn(name);
        throw Failure("--columns " + name, "is no column",
                      near.empty() ? "Name, Card, Start ... or a member of a clip in JSON"
                                   : fmt::format("did you mean {}?", near),
                      kUsage);
    }
}

void ClipColumns::AddMember(const std::string& name) {
    m_heads.push_back({name, Align::Left, 0});
    m_sources.push_back({{}, name});
    m_reading.metadata = m_reading.metadata || IsBelow(name, "metadata");
    m_reading.files = m_reading.files || IsBelow(name, "files");
    m_hasMembers = true;
}

Row ClipColumns::Cells(const ShownClip& shown) const {
    std::map<std::string, std::string> members;
    if (m_hasMembers) {
        ForEachCell(MembersOf(shown), [&](const std::string& name, const std::string& text) {
            members.emplace(name, text);
        });
    }
    Row cells;
    std::transform(m_sources.begin(), m_sources.end(), std::back_inserter(cells),
                   [&](const Source& source) {
                       return source.text ? source.text(shown) : members[source.member];
                   });
    return cells;
}

} // namespace nqp2::tool
