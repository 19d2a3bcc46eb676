// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/console.h"
#include "nqp2/card_scan.h"
#include "nqp2/command.h"
#include "nqp2/scan_report_output.h"
#include "nqp2/timeline/builders.h"
#include "nqp2/timeline/writers.h"
#include "nqp2/timeline_lists.h"
#include "nqp2/timeline_output.h"

#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace nqp2::tool {
namespace {

using timeline::Remarks;
using timeline::Timeline;

struct TimelineOptions {
    std::string card;
    std::vector<std::string> lists;
    std::string output;
    std::string form;
    std::string media = "original";
    std::string audio = "files";
    std::string start;
    std::string worker;
    bool bin = false;
    bool relative = false;
    bool dropFrame = false;
    bool noMemos = false;
    bool strict = false;
};

constexpr std::pair<const char*, timeline::SoundFrom> kAudio[] = {
    {"files", timeline::SoundFrom::Files},
    {"card", timeline::SoundFrom::Picture},
    {"none", timeline::SoundFrom::Nowhere}};
constexpr const char* kProxy = "proxy";

std::vector<std::string> FormNames() {
    std::vector<std::string> names;
    std::transform(std::begin(timeline::kForms), std::end(timeline::kForms),
                   std::back_inserter(names),
                   [](const timeline::Form& form) { return std::string(form.name); });
    return names;
}

const timeline::Form* FindForm(const std::string& name) {
    const auto* const form = std::find_if(
        std::begin(timeline::kForms), std::end(timeline::kForms), [&](const timeline::Form& each) {
            return TextFromBytes(name).CompareNoCase(TextFromBytes(each.name)) == 0;
        });
    return form == std::end(timeline::kForms) ? nullptr : form;
}

/// The form that was asked for, else that of the file's suffix; the first where there is no file.
const timeline::Form& FormOf(const TimelineOptions& options, bool isFile) {
    if (!options.form.empty()) {
        return *FindForm(options.form);
    }
    if (!isFile) {
        return timeline::kForms[0];
    }
    const std::string suffix = std::filesystem::path(options.output).extension().native();
    const timeline::Form* const form = FindForm(suffix.substr(suffix.empty() ? 0 : 1));
    if (form == nullptr) {
        throw Failure(options.output, "its suffix names no form",
                      fmt::format("give -f {}", fmt::join(FormNames(), ", ")), kUsage);
    }
    return *form;
}

void RequireSense(const TimelineOptions& options) {
    if (options.bin && !options.lists.empty()) {
        throw Failure("--bin", "takes the clips of the card", "no lists with it", kUsage);
    }
    if (options.relative && options.output == kStandardOutput) {
        throw Failure("--relative", "needs a file", "standard output has no folder", kUsage);
    }
}

timeline::BuildOptions BuildOptionsOf(const TimelineOptions& options) {
    timeline::BuildOptions build;
    build.proxies = options.media == kProxy;
    build.sound = std::find_if(std::begin(kAudio), std::end(kAudio), [&](const auto& row) {
                      return options.audio == row.first;
                  })->second;
    build.memos = !options.noMemos;
    build.start = options.start;
    // "01:00:00;00" says it too.
    const std::size_t mark = options.start.find_last_of(":.;");
    build.dropFrame =
        options.dropFrame || (mark != std::string::npos && options.start[mark] == ';');
    return build;
}

timeline::CardView ViewOf(const CardScan& scan, bool isRelative) {
    timeline::CardView view = {scan.card.Root(), scan.kind, &scan.clips, &scan.report,
                               scan.files.get(), {},        {},          {}};
    view.name = std::filesystem::path(scan.card.Folder()).filename().native();
    view.pathOf = [isRelative](const CString& path) {
        const std::string whole = OutputPath(path);
        return isRelative && !whole.empty() ? WithoutLinks(whole) : whole;
    };
    view.hasTimecode = [&scan](const _tag_P2Clip& clip) { return scan.ToldOf(clip).startTimecode; };
    return view;
}

/// Writes timelines and says what they lack.
class TimelineRun {
public:
    TimelineRun(Console& console, const TimelineOptions& options, std::size_t lists)
        : m_console(console), m_options(options), m_output(console, options.output, lists > 1),
          m_form(FormOf(options, m_output.IsFile())) {}

    void Write(const std::string& name, std::optional<Timeline> timeline, Remarks& remarks) {
        if (timeline) {
            CheckStart(*timeline, remarks);
            std::vector<Timeline> parts = PartsFor(m_form, std::move(*timeline), remarks);
            const std::vector<std::string> paths = m_output.PathsFor(name, m_form, parts.size());
            for (std::size_t i = 0; i < parts.size(); ++i) {
                const Timeline& part = parts[i];
                m_output.Write(paths[i], m_form, part, m_options.relative, remarks);
                if (parts.size() > 1) {
                    m_console.Message(fmt::format(
                        "{}: {} event{} at {:.5g} frames a second", paths[i], part.events.size(),
                        part.events.size() == 1 ? "" : "s", part.rate.PerSecond()));
                }
            }
        }
        remarks.Tell([&](const std::string& line) {
            m_console.Message(fmt::format("nqp2: {}: {}", name, line));
        });
        m_hasRemarks = m_hasRemarks || !remarks.AreNone();
    }

    [[nodiscard]] bool HasRemarks() const { return m_hasRemarks; }

private:
    void CheckStart(const Timeline& timeline, Remarks& remarks) const {
        if (!m_options.start.empty() &&
            !timeline::FrameOfText(m_options.start, timeline.rate, timeline.dropFrame)) {
            throw Failure("--start-timecode " + m_options.start, "is no timecode",
                          fmt::format("expected hh:mm:ss:ff at {:.5g} frames a second",
                                      timeline.rate.PerSecond()),
                          kUsage);
        }
        if (m_options.dropFrame && !timeline.dropFrame) {
            remarks.Add("its rate has no drop frame: counted without");
        }
    }

    Console& m_console;
    const TimelineOptions& m_options;
    TimelineOutput m_output;
    const timeline::Form& m_form;
    bool m_hasRemarks = false;
};

Status WriteBin(Console& console, const TimelineOptions& options, const CardScan& scan) {
    TimelineRun run(console, options, 1);
    const timeline::CardView view = ViewOf(scan, options.relative);
    const timeline::BuildOptions build = BuildOptionsOf(options);
    Remarks remarks;
    run.Write(view.name, FromClips(view, build, remarks), remarks);
    const Status status = TellLosses(console, scan.report, options.strict);
    return options.strict && run.HasRemarks() ? kSkipped : status;
}

Status WriteLists(Console& console, const TimelineOptions& options, const CardScan& scan) {
    TimelineLists lists(scan);
    try {
        lists.Choose(options.lists);
    } catch (const Failure&) { // perhaps because of what could not be read
        TellLosses(console, lists.Report(), false);
        throw;
    }
    TimelineRun run(console, options, lists.Chosen().size());
    const timeline::CardView view = ViewOf(scan, options.relative);
    const timeline::BuildOptions build = BuildOptionsOf(options);
    for (const tag_P2EDL* list : lists.Chosen()) {
        Remarks remarks;
        std::optional<Timeline> made =
            scan.kind == CardKind::P2 ? FromEditList(view, *list, build, remarks)
                                      : std::optional(FromPlaylist(view, *list, build, remarks));
        for (const EventDoubt& doubt : lists.Report().doubts) {
            if (doubt.list == list->Name) {
                remarks.AddEvent(static_cast<std::size_t>(doubt.event) + 1,
                                 BytesFromText(doubt.text) + " is not understood");
            }
        }
        run.Write(BytesFromText(list->Name), std::move(made), remarks);
    }
    const Status status = TellLosses(console, lists.Report(), options.strict);
    return options.strict && run.HasRemarks() ? kSkipped : status;
}

Status RunTimeline(Console& console, const TimelineOptions& options) {
    RequireSense(options);
    ScanOptions scan;
    scan.cards = {options.card};
    scan.worker = options.worker;
    scan.withFiles = true;
    const CardScans scans = ScanCards(console, scan);
    const CardScan& card = scans.cards.front();
    return options.bin ? WriteBin(console, options, card) : WriteLists(console, options, card);
}

void AddSourceOptions(const Command& command, TimelineOptions& options) {
    command.Flag("--bin", options.bin, "Take all clips of the card, one after the other");
    command.Flag("--relative", options.relative, "Tell media by their way from the file's folder");
    command.ValueOption("--media", options.media, "KIND", "original (the default) or proxy")
        .OneOf(std::vector<std::string>{"original", kProxy});
    std::vector<std::string> names;
    for (const auto& [name, from] : kAudio) {
        names.emplace_back(name);
    }
    command
        .ValueOption("--audio", options.audio, "FROM",
                     "Sound of the files (the default: one a channel), of the card (by its\n"
                     "picture, for programs that know P2 cards), none")
        .OneOf(names);
    command.ValueOption("--start-timecode", options.start, "TC",
                        "Timecode of the first frame; that of the list if left out");
    command.Flag("--drop-frame", options.dropFrame, "Count the timeline in drop frame");
    command.Flag("--no-memos", options.noMemos, "Leave out the memos, which become markers");
}

} // namespace

void AddTimelineCommand(const Command& program) {
    const Command command =
        program.Add("timeline", "Write edit lists, playlists or clips for editing systems");
    TimelineOptions& options = command.Runs(RunTimeline);
    command.CardArgument(options.card);
    command
        .Argument("LIST", options.lists,
                  "Names of edit lists or playlists, in any letter case; all if left out")
        .Required(false);
    command
        .ValueOption("-o,--output", options.output, "FILE",
                     "The file to write, which must not be there; for several lists a folder;\n"
                     "- for standard output")
        .Required();
    command
        .ValueOption("-f,--form", options.form, "FORM",
                     "otio (OpenTimelineIO), edl (CMX 3600), xml (Final Cut Pro 7), ale\n"
                     "(Avid log); by the file's suffix if left out, else otio")
        .OneOf(FormNames());
    AddSourceOptions(command, options);
    command.Flag("--strict", options.strict,
                 "Exit with 4 when something is missing or cannot be told in that form");
    command.WorkerOption(options.worker);
    command.Example("nqp2 timeline /media/card P001AB -o cut.otio");
}

} // namespace nqp2::tool
