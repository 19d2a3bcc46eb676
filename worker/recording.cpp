// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/recording.h"

#include "capacity/recording_cost.h"
#include "platform/case_blind.h"
#include "platform/unicode.h"
#include "programs/copy/copier.h"
#include "worker/card_folder.h"
#include "worker/clip_files.h"
#include "worker/transfer_watch.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <utility>

namespace nqp2::worker {
namespace {

constexpr std::uint16_t kPcm = 1;
constexpr std::uint16_t kMostChannels = 16;

/// Now, in local time with its zone: "2026-11-21T08:05:09+09:00".
CString DateText() {
    const std::time_t now = std::time(nullptr);
    std::tm parts = {};
    std::array<char, 40> text{};
    if (localtime_r(&now, &parts) == nullptr ||
        std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S%z", &parts) == 0) {
        return {};
    }
    CString date = platform::TextFromUtf8(text.data());
    const int minutes = date.GetLength() - 2;
    return date.Left(minutes) + L":" + date.Mid(minutes);
}

bool IsSound(const WAVEFORMATEX& wave) {
    const bool bits = wave.wBitsPerSample == 16 || wave.wBitsPerSample == 24;
    return wave.wFormatTag == kPcm && wave.nSamplesPerSec == kSampleRate && bits &&
           wave.nChannels <= kMostChannels;
}

/// Hears nothing: a recording is ended by its host, not by its progress.
class Unwatched final : public TransferWatch {
public:
    bool GoesOn(std::uint64_t, std::uint64_t) override { return true; }
    bool MayFinish(std::uint64_t) override { return true; }
};

} // namespace

Outcome CheckRecordingParameters(const RecordingParameters& parameters) {
    const RecordingFormat* const format = FindRecordingFormat(parameters.codeType);
    if (format == nullptr) {
        return Failure("Code type " + std::to_string(parameters.codeType) + " cannot be recorded.");
    }
    if (parameters.wave.nChannels != 0 && !IsSound(parameters.wave)) {
        return Failure("Sound is recorded as PCM of 16 or 24 bits at 48 kHz, up to 16 channels.");
    }
    if (parameters.dropFrame && !CanDropFrames(*format)) {
        return Failure("Timecodes of this rate drop no frames.");
    }
    std::string contents;
    Outcome outcome = FindContents(parameters.cardRoot, contents);
    return outcome && !parameters.clipName.IsEmpty() ? CheckClipName(parameters.clipName) : outcome;
}

Recording::Recording(RecordingParameters parameters, std::string contents)
    : m_parameters(std::move(parameters)), m_format(FindRecordingFormat(m_parameters.codeType)),
      m_contents(std::move(contents)), m_unitSize(m_format->unitSize), m_startDate(DateText()) {}

Outcome Recording::Start(const RecordingParameters& parameters, std::uint32_t expectedFrames,
                         eP2_VIDEO_STANDARD standard, std::unique_ptr<Recording>& recording) {
    std::string contents;
    Outcome outcome = CheckRecordingParameters(parameters);
    if (outcome) {
        outcome = FindContents(parameters.cardRoot, contents);
    }
    if (outcome) {
        outcome = CheckFoldersAreNoLinks(contents);
    }
    if (!outcome) {
        return outcome;
    }
    std::unique_ptr<Recording> started(new Recording(parameters, contents));
    outcome = started->CheckSpace(expectedFrames, standard);
    if (outcome) {
        outcome = started->m_name.Take(contents, parameters.clipName);
    }
    if (outcome) {
        outcome = started->CreateFiles();
    }
    if (outcome) {
        recording = std::move(started);
    }
    return outcome;
}

Outcome Recording::CheckSpace(std::uint32_t frames, eP2_VIDEO_STANDARD standard) const {
    const bool wideAudio = m_parameters.wave.wBitsPerSample == 24;
    const std::int64_t space =
        capacity::CostOf(m_format->type, wideAudio, standard).Space(std::int64_t{frames});
    std::uint64_t free = 0;
    if (const auto status = platform::Files().FreeSpace(m_contents, free); !status) {
        return Failure("ask for the free space of", m_contents, status);
    }
    return frames == 0 || static_cast<std::uint64_t>(std::max<std::int64_t>(space, 0)) <= free
               ? Outcome()
               : Failure("There is too little space in " + m_contents + " for " +
                         std::to_string(frames) + " frames.");
}

Outcome Recording::PreparePlace(const char* folder, const std::string& suffix,
                                std::string& path) const {
    const std::string parent = FolderBelow(m_contents, folder);
    path = parent + "/" + platform::NameBytesFromText(m_name.Name().View()) + suffix;
    if (!platform::EnsureFolder(parent)) {
        return Failure("Cannot make the folder " + parent + ".");
    }
    static_cast<void>(platform::Files().RemoveAbandoned(parent));
    return {};
}

Outcome Recording::CreateFiles() {
    const FrameRate rate = FrameRateOf(m_format->rate).value_or(FrameRate{});
    CString timecode =
        StartTimecodeText(*m_format, m_parameters.startTimecode, m_parameters.dropFrame);
    if (m_parameters.dropFrame) {
        timecode.SetAt(timecode.ReverseFind(L':'), L';');
    }
    const VideoFormat format = {m_format->essence,
                                m_format->width,
                                m_format->height,
                                CString(m_format->rate).ReverseFind(L'i') >= 0,
                                rate,
                                m_format->isWide || m_parameters.isWide,
                                platform::Utf8FromText(timecode.View())};
    std::string path;
    Outcome outcome = PreparePlace("VIDEO", ".MXF", path);
    if (outcome) {
        outcome = EssenceFile::CreateVideo(path, format, m_video);
    }
    m_channels.resize(m_parameters.wave.nChannels);
    for (std::size_t i = 0; outcome && i < m_channels.size(); ++i) {
        std::array<char, 32> suffix{};
        std::snprintf(suffix.data(), suffix.size(), "%02zu.MXF", i);
        outcome = PreparePlace("AUDIO", suffix.data(), path);
        if (outcome) {
            outcome = EssenceFile::CreateSound(path, {m_parameters.wave.wBitsPerSample, rate},
                                               m_sound.emplace_back());
        }
    }
    return outcome;
}

Outcome Recording::AddVideo(std::string_view unit) {
    const bool first = m_lastUnitSize == 0;
    if (Outcome outcome = CheckAccessUnit(*m_format, unit, first); !outcome) {
        return outcome;
    }
    if (first) {
        m_unitSize = unit.size();
        m_codec = CodecName(*m_format, unit);
    }
    if (unit.size() != m_unitSize) {
        return Failure("An access unit of " + std::to_string(unit.size()) +
                       " bytes follows one of " + std::to_string(m_unitSize) +
                       "; all of a clip have one size.");
    }
    m_lastUnitSize = unit.size();
    return m_video->Add(unit);
}

Outcome Recording::AddSound(std::string_view samples) {
    const std::size_t sample = m_parameters.wave.wBitsPerSample / 8U;
    const std::size_t channels = m_channels.size();
    if (channels == 0 || samples.size() % (sample * channels) != 0) {
        return Failure(std::to_string(samples.size()) +
                       " bytes of sound are not whole samples of " + std::to_string(channels) +
                       " channels.");
    }
    for (std::string& channel : m_channels) {
        channel.clear();
    }
    for (std::size_t at = 0; at < samples.size(); at += sample) {
        m_channels[at / sample % channels].append(samples.substr(at, sample));
    }
    Outcome outcome;
    for (std::size_t i = 0; outcome && i < channels; ++i) {
        outcome = m_sound[i]->Add(m_channels[i]);
    }
    return outcome;
}

Outcome Recording::Add(std::string_view video, std::string_view sound) {
    Outcome outcome = video.empty() ? Outcome() : AddVideo(video);
    return outcome && !sound.empty() ? AddSound(sound) : outcome;
}

Outcome Recording::FinishEssence() {
    if (m_video->Frames() == 0) {
        return Failure("No frame was recorded.");
    }
    Outcome outcome = m_video->Finish(m_video->Frames());
    for (std::size_t i = 0; outcome && i < m_sound.size(); ++i) {
        outcome = m_sound[i]->Finish(m_video->Frames());
    }
    return outcome;
}

Outcome Recording::WriteMetadata(std::unique_ptr<platform::FileWriter>& writer,
                                 std::string& path) const {
    RecordedClip clip;
    clip.format = m_format;
    clip.name = m_name.Name();
    clip.userName = m_parameters.userClipName;
    clip.codec = m_codec;
    clip.frames = m_video->Frames();
    clip.startTimecode = m_parameters.startTimecode;
    clip.dropFrame = m_parameters.dropFrame;
    clip.isWide = m_format->isWide || m_parameters.isWide;
    clip.bitsPerSample = m_parameters.wave.wBitsPerSample;
    clip.video = {m_video->EssenceStart(), m_video->EssenceSize()};
    for (const auto& file : m_sound) {
        clip.sound.push_back({file->EssenceStart(), file->EssenceSize()});
    }
    clip.related = m_parameters.related;
    clip.startDate = m_startDate;
    clip.endDate = DateText();
    std::string xml;
    Outcome outcome = MakeMetadata(clip, xml);
    if (outcome) {
        outcome = PreparePlace("CLIP", ".XML", path);
    }
    if (!outcome) {
        return outcome;
    }
    if (const auto status = platform::Files().Create(path, writer); !status) {
        return Failure("write", path, status);
    }
    Unwatched watch;
    return copy::Copier(copy::kDefaultBlock, xml.size(), watch)
        .Copy({path, xml.size(), xml, {}}, path, *writer);
}

Outcome Recording::NameFiles(platform::FileWriter& metadata, const std::string& metadataPath) {
    std::vector<std::string> named;
    Outcome outcome = m_video->Commit();
    if (outcome) {
        named.push_back(m_video->Path());
    }
    for (std::size_t i = 0; outcome && i < m_sound.size(); ++i) {
        outcome = m_sound[i]->Commit();
        if (outcome) {
            named.push_back(m_sound[i]->Path());
        }
    }
    if (outcome) {
        const auto status = metadata.Commit();
        outcome = status ? Outcome() : Failure("name the file", metadataPath, status);
    }
    if (!outcome) {
        for (const std::string& path : named) {
            static_cast<void>(platform::Files().RemoveFile(path));
        }
    }
    return outcome;
}

Outcome Recording::Finish() {
    std::unique_ptr<platform::FileWriter> metadata;
    std::string path;
    Outcome outcome = FinishEssence();
    if (outcome) {
        outcome = WriteMetadata(metadata, path);
    }
    return outcome ? NameFiles(*metadata, path) : outcome;
}

} // namespace nqp2::worker
