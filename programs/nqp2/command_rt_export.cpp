// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card.h"
#include "nqp2/command.h"
#include "nqp2/input_text.h"
#include "nqp2/raw_video.h"
#include "nqp2/record_output.h"
#include "nqp2/sound_file.h"
#include "nqp2/transfer_watch.h"
#include "nqp2/value.h"
#include "nqp2/worker_session.h"

#include "NQP2ParserU/RecordedClips.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace nqp2::tool {
namespace {

constexpr std::uint16_t kBarePcm = 1;
constexpr std::uint32_t kSampleRate = 48000;

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
    bool quiet = false;
    std::string worker;
};

/// The two streams of a recording, the sound in step with the frames.
class Streams {
public:
    Streams(const RtExportOptions& options, const StreamForm& form)
        : m_form(form), m_units(options.video, form.unitSize) {
        if (!options.sound.empty() && options.isBare) {
            m_sound.emplace(options.sound, BareFormat(options));
        } else if (!options.sound.empty()) {
            m_sound.emplace(options.sound);
        }
    }

    bool Next(std::string& unit, std::string& samples) {
        if (!m_units.Next(unit)) {
            return false;
        }
        ++m_frames;
        if (m_sound) {
            samples = m_sound->Read(
                static_cast<std::size_t>(SamplesUpTo(m_frames) - SamplesUpTo(m_frames - 1)));
        }
        return true;
    }
    [[nodiscard]] std::int64_t Frames() const { return m_frames; }
    /// 0 when the file does not tell.
    [[nodiscard]] std::uint32_t ExpectedFrames() const {
        constexpr std::uint64_t kMost = std::numeric_limits<std::int32_t>::max();
        const std::uint64_t frames =
            m_form.unitSize == 0 ? 0 : m_units.File().Size() / m_form.unitSize;
        return static_cast<std::uint32_t>(std::min(frames, kMost));
    }
    [[nodiscard]] WAVEFORMATEX SoundFormat() const {
        return m_sound ? m_sound->Format() : WAVEFORMATEX();
    }
    bool GoesOn(TransferWatch& watch) const {
        return watch.GoesOn(m_units.File().Position() / 1024, m_units.File().Size() / 1024);
    }

private:
    static WAVEFORMATEX BareFormat(const RtExportOptions& options) {
        WAVEFORMATEX format;
        format.wFormatTag = kBarePcm;
        format.nChannels = options.channels;
        format.wBitsPerSample = options.bits;
        format.nSamplesPerSec = kSampleRate;
        format.nBlockAlign = static_cast<std::uint16_t>(options.channels * (options.bits / 8));
        format.nAvgBytesPerSec = kSampleRate * format.nBlockAlign;
        return format;
    }
    [[nodiscard]] std::int64_t SamplesUpTo(std::int64_t frame) const {
        return frame * kSampleRate * m_form.rate.seconds / m_form.rate.frames;
    }

    StreamForm m_form;
    AccessUnits m_units;
    std::optional<SoundFile> m_sound;
    std::int64_t m_frames = 0;
};

void BeginRecording(WorkerSession& session, const RtExportOptions& options, const Streams& streams,
                    eCodeType codeType) {
    CArray<stu_R8PRelationClipInfo> none;
    session.Require(session->SetRTExportParam(codeType, {}, streams.SoundFormat(), nullptr,
                                              WorkerPath(options.card), TextFromBytes(options.name),
                                              TextFromBytes(options.title), options.timecode, none,
                                              options.dropFrame ? 1 : 0, 0) == 1 &&
                        session->SetRTExportExtraParam(options.isWide ? 1 : 0) == 1 &&
                        session->StartRTExport(streams.ExpectedFrames()) == 1,
                    options.video, "not recorded");
}

/// How a recording ends: what the worker has of it is kept or deleted.
enum Ending : int { kKeep = 0, kDrop = 1 };

void SendUnit(WorkerSession& session, const RtExportOptions& options, std::string& unit,
              std::string& samples, std::int64_t sent) {
    constexpr unsigned char kAccessUnit = 2;
    const int answer = session->AddRTExportAVData(
        kAccessUnit, reinterpret_cast<unsigned char*>(unit.data()),
        static_cast<std::uint32_t>(unit.size()), reinterpret_cast<unsigned char*>(samples.data()),
        static_cast<std::uint32_t>(samples.size()), 0);
    session.Require(answer == 1, options.video,
                    sent == 0 ? "not recorded" : fmt::format("only {} frames recorded", sent));
}

/// False when the user wants no more of it.
bool SendAll(WorkerSession& session, TransferWatch& watch, const RtExportOptions& options,
             Streams& streams, std::int64_t& sent) {
    std::string unit;
    std::string samples;
    while (streams.Next(unit, samples)) {
        SendUnit(session, options, unit, samples, sent);
        ++sent;
        if (!streams.GoesOn(watch)) {
            return false;
        }
    }
    return true;
}

/// A recording that is cancelled leaves nothing; one that fails leaves what came before.
void RecordAll(WorkerSession& session, TransferWatch& watch, const RtExportOptions& options,
               Streams& streams) {
    std::int64_t sent = 0;
    bool isWhole = false;
    try {
        isWhole = SendAll(session, watch, options, streams, sent);
    } catch (const Failure&) {
        session.Require(sent == 0 || session->StopRTExport(kKeep, 0) == 1, options.video,
                        "not recorded");
        throw;
    }
    if (!isWhole) {
        session->StopRTExport(kDrop, 0);
        throw Failure(options.video, "not recorded", "cancelled");
    }
    session.Require(session->StopRTExport(kKeep, 0) == 1, options.video, "not recorded");
}

/// The clips that the recording has become: several where a file was full.
std::vector<std::string> ClipNames(WorkerSession& session) {
    std::vector<std::string> names;
    for (const CString& name : RecordedClips(*session.operator->())) {
        names.push_back(BytesFromText(name));
    }
    return names;
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

Status RunRtExport(Console& console, const RtExportOptions& options) {
    const eCodeType codeType = CodeTypeFromArgument(options.codeType);
    const StreamForm form = StreamFormOf(codeType);
    const Card card(options.card);
    card.RequireContents();
    Streams streams(options, form);
    TransferWatch watch(options.quiet);
    WorkerSession session(options.worker);
    session->SetSystemType(form.rate.standard);
    BeginRecording(session, options, streams, codeType);
    watch.Begin(fmt::format("{}", fmt::join(ClipNames(session), ", ")));
    RecordAll(session, watch, options, streams);
    watch.End();
    PrintRecording(console, options, ClipNames(session), streams.Frames());
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

void AddRtExportCommand(const Command& program) {
    const Command command =
        program.Add("rt-export", "Record a raw stream onto a card as a new clip");
    RtExportOptions& options = command.Runs(RunRtExport);
    command.CardArgument(options.card);
    command.Argument("STREAM", options.video,
                     "A file of DV frames, or AVC-Intra in Annex B form whose access units\n"
                     "begin with a delimiter each and the first with parameter sets");
    command.ValueOption("--code-type", options.codeType, "TYPE", "What it is: a name or number")
        .Required();
    AddSoundOptions(command, options);
    AddClipOptions(command, options);
    command.JsonFlag(options.json);
    command.QuietFlag(options.quiet);
    command.WorkerOption(options.worker);
    command.Example("nqp2 rt-export /media/card tape.dv --code-type CT_DV25_50I --sound tape.wav");
}

} // namespace nqp2::tool
