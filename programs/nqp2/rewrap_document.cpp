// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/rewrap_document.h"

#include "console/console.h"
#include "console/json_form.h"
#include "console/json_output.h"
#include "console/value.h"
#include "nqp2/rewrap/targets.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace nqp2::tool {
namespace {

constexpr std::pair<FileFate, const char*> kFates[] = {
    {FileFate::Left, "left"}, {FileFate::Written, "written"}, {FileFate::Refused, "failed"}};
constexpr std::pair<RewrapJoin, const char*> kJoins[] = {{RewrapJoin::Frames, "frames"},
                                                         {RewrapJoin::Bytes, "bytes"}};

template <class Rows, class Key>
std::string WordFor(const Rows& rows, Key key) {
    return std::find_if(std::begin(rows), std::end(rows),
                        [&](const auto& row) { return row.first == key; })
        ->second;
}

List ListOf(const std::vector<std::string>& texts) {
    return {texts.begin(), texts.end()};
}

List RemarksOf(const RewrappedFile& file) {
    List remarks = ListOf(file.plan->remarks);
    for (const CString& remark : file.result.remarks) {
        remarks.emplace_back(BytesFromText(remark));
    }
    return remarks;
}

Record PartRecord(const RewrapPart& part) {
    List sounds;
    for (const CString& sound : part.sounds) {
        sounds.emplace_back(PathIn(sound));
    }
    return {{"ClipName", BytesFromText(part.name)},
            {"video", PathIn(part.video)},
            {"sounds", sounds},
            {"first", part.first},
            {"frames", part.frames != 0 ? part.frames : part.promised},
            {"promised", part.promised}};
}

void PutPlan(const rewrap::Plan& plan, Record& record) {
    const RewrapRequest& request = plan.request;
    const auto text = [](const CString& value) { return BytesFromText(value); };
    const auto add = [&record](std::string_view name, Value value) {
        record.push_back({name, std::move(value)});
    };
    add("target", PathIn(request.target));
    add("container", std::string(rewrap::NameOf(request.container)));
    add("join", WordFor(kJoins, request.join));
    add("codec", text(request.codec));
    add("rate", Record{{"num", request.rate.frames}, {"den", request.rate.seconds}});
    add("interlaced", request.interlaced);
    add("aspect", request.aspectHeight == 0
                      ? std::string()
                      : fmt::format("{}:{}", request.aspectWidth, request.aspectHeight));
    add("timecode", text(request.timecode));
    add("title", text(request.title));
    add("reel", text(request.reel));
    add("date", text(request.date));
    add("oneTrack", request.oneTrack);
    add("sound", ListOf(plan.soundTexts));
    List parts;
    std::transform(request.parts.begin(), request.parts.end(), std::back_inserter(parts),
                   PartRecord);
    add("parts", std::move(parts));
    List chapters;
    for (const RewrapChapter& chapter : request.chapters) {
        chapters.emplace_back(Record{{"frame", chapter.frame}, {"text", text(chapter.text)}});
    }
    add("chapters", std::move(chapters));
}

Record FileRecord(const RewrappedFile& file) {
    Record record = {{"name", file.plan->name}, {"state", WordFor(kFates, file.fate)}};
    if (file.fate == FileFate::Refused) {
        record.push_back({"failure", file.failure});
    }
    if (file.plan->IsPossible()) {
        PutPlan(*file.plan, record);
    }
    if (file.fate == FileFate::Written) {
        record.push_back({"written", Record{{"bytes", file.result.bytes},
                                            {"frames", file.result.frames},
                                            {"samples", file.result.samples},
                                            {"soundTracks", file.result.soundTracks}}});
    }
    record.push_back({"remarks", RemarksOf(file)});
    return record;
}

std::string Counted(std::uint64_t count, const char* what) {
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

std::string PartLine(const RewrapPart& part, const FrameRate& rate) {
    const std::uint32_t frames = part.frames != 0 ? part.frames : part.promised;
    const bool isKnown = frames != 0 && rate.frames != 0;
    const std::string stretch = part.first == 0 && frames == part.promised
                                    ? (isKnown ? Counted(frames, "frame") : "all frames")
                                    : fmt::format("frames {} to {} of {}", part.first,
                                                  part.first + frames - 1, part.promised);
    const std::string sounds =
        part.sounds.IsEmpty()
            ? ""
            : fmt::format(" and {} of sound",
                          Counted(static_cast<std::uint64_t>(part.sounds.GetSize()), "file"));
    return fmt::format("  {}: {} of {}{}", BytesFromText(part.name), stretch, PathIn(part.video),
                       sounds);
}

void PrintPlan(Console& console, const rewrap::Plan& plan) {
    const RewrapRequest& request = plan.request;
    const std::string rate =
        request.rate.frames == 0 ? "" : fmt::format(", {:.5g} a second", request.rate.PerSecond());
    const std::string timecode =
        request.timecode.IsEmpty() ? "" : ", from " + BytesFromText(request.timecode);
    console.WriteLine(fmt::format("{}: {}{}{}, {}", PathIn(request.target),
                                  BytesFromText(request.codec), rate, timecode,
                                  Counted(plan.soundTexts.size(), "track") + " of sound" +
                                      (request.oneTrack ? " in one" : "")));
    for (const RewrapPart& part : request.parts) {
        console.WriteLine(PartLine(part, request.rate));
    }
}

} // namespace

std::string PathIn(const CString& path) {
    return PosixPath(path);
}

void PrintRewrap(Console& console, const RewrapRun& run, const std::vector<Loss>& losses) {
    List files;
    for (const RewrappedFile& file : run.files) {
        files.emplace_back(FileRecord(file));
    }
    List lost;
    for (const Loss& loss : losses) {
        lost.emplace_back(Record{{"name", loss.name}, {"reason", loss.reason}});
    }
    PrintJson(console, Record{{"format", std::string("nqp2-rewrap")},
                              {"version", kJsonVersion},
                              {"files", std::move(files)},
                              {"lost", std::move(lost)}});
    console.Finish();
}

void PrintPlans(Console& console, const RewrapRun& run) {
    for (const RewrappedFile& file : run.files) {
        if (file.plan->IsPossible()) {
            PrintPlan(console, *file.plan);
        }
    }
}

void PrintRewrapped(Console& console, const RewrappedFile& file) {
    console.WriteLine(fmt::format("{}: {}, {} of sound, {} bytes",
                                  PathIn(file.plan->request.target),
                                  Counted(file.result.frames, "frame"),
                                  Counted(file.result.soundTracks, "track"), file.result.bytes));
    console.Finish(); // the next may take long
}

} // namespace nqp2::tool
