// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/value.h"
#include "nqp2/card_entry.h"
#include "nqp2/code_types.h"
#include "nqp2/command.h"
#include "nqp2/frame_stream.h"
#include "nqp2/input_text.h"
#include "nqp2/record_output.h"
#include "nqp2/transfer_watch.h"
#include "nqp2/worker_session.h"

#include "NQP2ParserU/Interrupt.h"
#include "NQP2ParserU/RecordedClips.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace nqp2::tool {
namespace {

constexpr std::uint16_t kBarePcm = 1;

struct RtExportOptions {
    std::string card;
    std::string video;
    std::string codeType;
    std::string sound;
    bool isBare = false;
    std::uint16_t channels = 2;
    std::uint16_t bits = 16;
    std::string name;
    std::string title;
    std::uint32_t timecode = 0;
    bool dropFrame = false;
    bool isWide = false;
    bool json = false;
    ProgressOptions progress;
    std::string worker;
};

WAVEFORMATEX BareFormat(const RtExportOptions& options) {
    WAVEFORMATEX format;
    format.wFormatTag = kBarePcm;
    format.nChannels = options.channels;
    format.wBitsPerSample = options.bits;
    format.nSamplesPerSec = kSampleRate;
    format.nBlockAlign = static_cast<std::uint16_t>(options.channels * (options.bits / 8));
    format.nAvgBytesPerSec = kSampleRate * format.nBlockAlign;
    return format;
}

std::optional<SoundFile> SoundOf(const RtExportOptions& options) {
    if (options.sound.empty()) {
        return std::nullopt;
    }
    return options.isBare ? SoundFile(options.sound, BareFormat(options))
                          : SoundFile(options.sound);
}

void BeginRecording(WorkerSession& session, const RtExportOptions& options,
                    const FrameStream& stream, eCodeType codeType) {
    CArray<stu_R8PRelationClipInfo> none;
    session.Require(session->SetRTExportParam(codeType, {}, stream.SoundFormat(), nullptr,
                                              WorkerPath(options.card), TextFromBytes(options.name),
                                              TextFromBytes(options.title), options.timecode, none,
                                              options.dropFrame ? 1 : 0, 0) == 1 &&
                        session->SetRTExportExtraParam(options.isWide ? 1 : 0) == 1 &&
                        session->StartRTExport(stream.Expected()) == 1,
                    options.video, "not recorded");
}

/// The clips that the recording has become: several where a file was full.
std::vector<std::string> ClipNames(WorkerSession& session) {
    std::vector<std::string> names;
    for (const CString& name : RecordedClips(*session.operator->())) {
        names.push_back(BytesFromText(name));
    }
    return names;
}

/// Frames of these clips, as their metadata tell.
std::int64_t FramesOnCard(WorkerSession& session, const RtExportOptions& options) {
    const Card card(options.card);
    std::int64_t frames = 0;
    for (const CString& name : RecordedClips(*session.operator->())) {
        _tag_P2Clip clip;
        frames += session->LoadClipInfo(card.Root(), name, clip) == 0 ? clip.Duration : 0;
    }
    return frames;
}

/// How a recording ends: what the worker has of it is kept or deleted.
enum Ending : int { kKeep = 0, kDrop = 1 };

void Keep(WorkerSession& session, const RtExportOptions& options) {
    session.Require(session->StopRTExport(kKeep, 0) == 1, options.video, "not recorded");
}

/// False when the worker refuses one of the frames; it keeps those before it.
bool Send(WorkerSession& session, Frames& frames) {
    constexpr unsigned char kAccessUnit = 2;
    constexpr unsigned char kAccessUnits = 3; // as many as the last argument says
    const bool isOne = frames.count == 1;
    return session->AddRTExportAVData(isOne ? kAccessUnit : kAccessUnits,
                                      reinterpret_cast<unsigned char*>(frames.video.data()),
                                      static_cast<std::uint32_t>(frames.video.size()),
                                      reinterpret_cast<unsigned char*>(frames.sound.data()),
                                      static_cast<std::uint32_t>(frames.sound.size()),
                                      isOne ? 0 : frames.count) == 1;
}

/// Keeps what came before the refusal and throws what to report. `sent`: something was taken before
/// this request.
[[noreturn]] void EndRefused(WorkerSession& session, const RtExportOptions& options, bool sent) {
    const std::string sentence = session.Sentence();
    const bool isKept = session->StopRTExport(kKeep, 0) == 1;
    session.Require(isKept || (!sent && !sentence.empty()), options.video, "not recorded");
    const std::int64_t frames = isKept ? FramesOnCard(session, options) : 0;
    throw Failure(options.video,
                  isKept ? fmt::format("only {} frames recorded", frames) : "not recorded",
                  sentence);
}

enum class Outcome { Whole, Refused, Cancelled };

/// `sent`: whether the worker has taken anything.
Outcome SendAll(WorkerSession& session, TransferWatch& watch, FrameStream& stream, bool& sent) {
    for (Frames frames; stream.Next(frames); sent = true) {
        if (!Send(session, frames)) {
            return Outcome::Refused;
        }
        if (!watch.GoesOn(stream.File().Position() / 1024, stream.File().Size() / 1024)) {
            return Outcome::Cancelled;
        }
    }
    // A live stream may end by the same signal.
    return WasInterrupted() ? Outcome::Cancelled : Outcome::Whole;
}

/// A recording that is cancelled leaves nothing; one that fails leaves what came before.
void RecordAll(WorkerSession& session, TransferWatch& watch, const RtExportOptions& options,
               FrameStream& stream) {
    bool sent = false;
    Outcome outcome = Outcome::Whole;
    try {
        outcome = SendAll(session, watch, stream, sent);
    } catch (const Failure&) {
        if (sent) {
            Keep(session, options);
        }
        throw;
    }
    if (outcome == Outcome::Refused) {
        EndRefused(session, options, sent);
    }
    if (outcome == Outcome::Cancelled) {
        session->StopRTExport(kDrop, 0);
        throw Failure(options.video, "not recorded", "cancelled");
    }
    Keep(session, options);
}

void PrintRecording(Console& console, const RtExportOptions& options,
                    const std::vector<std::string>& names, std::int64_t frames) {
    if (options.json) {
        List clips(names.begin(), names.end());
        PrintJson(console, Record{{"ClipName", names.empty() ? "" : names.front()},
                                  {"clips", std::move(clips)},
                                  {"frames", frames}});
    } else {
        console.WriteLine(fmt::format("{}: {} frames recorded", fmt::join(names, ", "), frames));
    }
}

Status RunRtExport(Console& console, const RtExportOptions& given) {
    RtExportOptions options = given;
    const eCodeType codeType = CodeTypeFromArgument(options.codeType);
    const StreamForm form = StreamFormOf(codeType);
    const Card card = EnterCard(console, options.card);
    card.RequireContents();
    options.card = card.Argument();
    AccessUnits video(options.video, form.unitSize);
    FrameStream stream(form, std::move(video), SoundOf(options));
    TransferWatch watch(options.progress);
    WorkerSession session(options.worker);
    session->SetSystemType(form.rate.standard);
    BeginRecording(session, options, stream, codeType);
    const FileSum all = {1, stream.File().Size()};
    watch.BeginRun("record", all);
    watch.Begin(fmt::format("{}", fmt::join(ClipNames(session), ", ")));
    RecordAll(session, watch, options, stream);
    watch.End(all);
    watch.EndRun();
    PrintRecording(console, options, ClipNames(session), stream.Given());
    return kDone;
}

void AddSoundOptions(const Command& command, RtExportOptions& options) {
    const Option sound =
        command.ValueOption("--sound", options.sound, "FILE",
                            "A sound file of 16 or 24 bits at 48 kHz: WAV, RF64, AIFF, FLAC, ...");
    const Option bare =
        command
            .Flag("--bare", options.isBare,
                  "The sound file is bare little-endian samples at 48 kHz, without a head")
            .Needs(sound);
    command.ValueOption("--channels", options.channels, "N", "Channels of bare samples (2)")
        .Between(1, 16)
        .Needs(bare);
    command.ValueOption("--bits", options.bits, "N", "Bits of bare samples, 16 (the default) or 24")
        .Needs(bare)
        .OneOf({16, 24});
}

void AddClipOptions(const Command& command, RtExportOptions& options) {
    command.ValueOption("--name", options.name, "CLIP", "Name of the clip; a free one if left out");
    command.ValueOption("--title", options.title, "TEXT", "User clip name");
    command.ValueOption("--timecode", options.timecode, "N", "Start timecode as a frame count");
    command.Flag("--drop-frame", options.dropFrame, "The timecode drops frames");
    command.Flag("--wide", options.isWide, "A standard-definition picture is 16:9");
}

} // namespace

void AddRecordCommand(const Command& program) {
    const Command command = program.Add("record", "Record a raw stream onto a card as a new clip");
    command.Alias("rt-export");
    RtExportOptions& options = command.Runs(RunRtExport);
    command.CardArgument(options.card);
    command.Argument("STREAM", options.video,
                     "A file of DV frames, or AVC-Intra in Annex B form whose access units\n"
                     "begin with a delimiter each and the first with parameter sets");
    command.ValueOption("-f,--code-type", options.codeType, "TYPE", "What it is: a name or number")
        .Required();
    AddSoundOptions(command, options);
    AddClipOptions(command, options);
    command.JsonFlag(options.json);
    command.AddProgressOptions(options.progress);
    command.WorkerOption(options.worker);
    command.Note(CodeTypeNote(CodeTypes::Recorded));
    command.Example("nqp2 record /media/card tape.dv -f CT_DV25_50I --sound tape.wav");
}

} // namespace nqp2::tool
