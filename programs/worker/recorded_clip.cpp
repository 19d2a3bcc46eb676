// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/recorded_clip.h"

#include "platform/guid_text.h"
#include "platform/unicode.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <limits>
#include <utility>

namespace nqp2::worker {
namespace {

/// What a file has beside its frames, at most: a head of some 30 KiB, and at the end an index of the
/// frames.
constexpr std::uint64_t kHeadOfVideo = std::uint64_t{128} << 10U;
constexpr std::uint64_t kEndOfVideo = std::uint64_t{1} << 20U;
constexpr std::uint64_t kEndOfSound = std::uint64_t{256} << 10U; // some silence, too

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

RecordedClip Described(const RecordingParameters& parameters, const RecordingFormat& format) {
    RecordedClip clip;
    clip.format = &format;
    clip.name = parameters.clipName;
    clip.userName = parameters.userClipName;
    clip.startTimecode = parameters.startTimecode;
    clip.dropFrame = parameters.dropFrame;
    clip.isWide = format.isWide || parameters.isWide;
    clip.bitsPerSample = parameters.wave.wBitsPerSample;
    clip.relations = parameters.relations;
    return clip;
}

std::string PathOf(const platform::Folder& folder, const std::string& name) {
    return folder.Path() + "/" + name;
}

/// Writes a small file, brings it onto the medium and reads it back from there.
platform::IoStatus WriteWhole(platform::FileWriter& writer, std::string_view content, bool& same) {
    std::string back(content.size() + 1, '\0');
    std::size_t filled = 0;
    std::size_t count = 1;
    platform::IoStatus status = writer.WriteAt(0, content);
    if (status) {
        status = writer.Flush();
    }
    while (status && count != 0 && filled < back.size()) {
        status = writer.ReadAt(filled, back.data() + filled, back.size() - filled, count);
        filled += count;
    }
    same = std::string_view(back).substr(0, filled) == content;
    return status;
}

} // namespace

Outcome CheckMetadataTexts(const RecordingParameters& parameters) {
    std::string xml;
    return MakeMetadata(Described(parameters, *FindRecordingFormat(parameters.codeType)), xml);
}

ClipMaker::ClipMaker(const RecordingParameters& parameters, ClaimedName name,
                     std::int64_t framesBefore)
    : m_parameters(parameters), m_format(FindRecordingFormat(parameters.codeType)),
      m_name(std::move(name)), m_identifier(platform::NewGuid()), m_framesBefore(framesBefore),
      m_channels(parameters.wave.nChannels), m_startDate(DateText()) {
    if (m_format->unitSize != 0) {
        SetUnitSize(m_format->unitSize);
    }
}

Outcome ClipMaker::Begin(const CardFolders& card, const RecordingParameters& parameters,
                         ClaimedName name, std::int64_t framesBefore,
                         std::unique_ptr<ClipMaker>& clip) {
    std::unique_ptr<ClipMaker> begun(new ClipMaker(parameters, std::move(name), framesBefore));
    Outcome outcome = begun->OpenFolders(card);
    if (outcome) {
        outcome = begun->KeepRoomForEnd();
    }
    if (outcome) {
        outcome = begun->CreateFiles();
    }
    if (outcome) {
        clip = std::move(begun);
    }
    return outcome;
}

std::string ClipMaker::FileName(const std::string& suffix) const {
    return platform::NameBytesFromText(m_name.name.View()) + suffix;
}

Outcome ClipMaker::OpenFolders(const CardFolders& card) {
    const std::pair<const char*, std::unique_ptr<platform::Folder>*> wanted[] = {
        {"VIDEO", &m_place.video}, {"AUDIO", &m_place.sound}, {"CLIP", &m_place.clip}};
    for (const auto& [name, folder] : wanted) {
        const platform::IoStatus status = MakeBelow(*card.contents, name, *folder);
        if (!status) {
            return Failure("make or open", PathOf(*card.contents, name), status);
        }
        static_cast<void>((*folder)->RemoveAbandoned()); // litter is no reason not to record
    }
    return {};
}

Outcome ClipMaker::KeepRoomForEnd() {
    const std::string name = FileName(".MXF");
    platform::IoStatus status = m_place.video->Create(name, m_room);
    const std::uint64_t size = kEndOfVideo + m_channels.size() * kEndOfSound;
    const std::string block(std::size_t{64} << 10U, 'e'); // not zeros, which may take no room
    for (std::uint64_t at = 0; status && at < size; at += block.size()) {
        status = m_room->WriteAt(at, block);
    }
    return status ? Outcome() : Failure("write", PathOf(*m_place.video, name), status);
}

Outcome ClipMaker::CreateFiles() {
    const FrameRate& rate = RateOf(*m_format);
    CString timecode = StartTimecodeText(*m_format, m_parameters.startTimecode + m_framesBefore,
                                         m_parameters.dropFrame);
    if (m_parameters.dropFrame) {
        timecode.SetAt(timecode.ReverseFind(L':'), L';');
    }
    const VideoFormat format = {m_format->essence,
                                m_format->width,
                                m_format->height,
                                rate.IsInterlaced(),
                                rate,
                                m_format->isWide || m_parameters.isWide,
                                platform::Utf8FromText(timecode.View())};
    Outcome outcome = EssenceFile::CreateVideo(*m_place.video, FileName(".MXF"), format, m_video);
    for (std::size_t i = 0; outcome && i < m_channels.size(); ++i) {
        std::array<char, 32> suffix{};
        std::snprintf(suffix.data(), suffix.size(), "%02zu.MXF", i);
        outcome = EssenceFile::CreateSound(*m_place.sound, FileName(suffix.data()),
                                           {m_parameters.wave.wBitsPerSample, rate},
                                           m_sound.emplace_back());
    }
    return outcome;
}

void ClipMaker::SetUnitSize(std::size_t size) {
    const std::uint64_t most = m_parameters.mostFileBytes;
    const std::uint64_t frames = (most - std::min(most, kHeadOfVideo + kEndOfVideo)) / size;
    m_mostFrames = std::max<std::int64_t>(1, static_cast<std::int64_t>(frames));
}

Outcome ClipMaker::AddVideo(std::string_view unit) {
    Outcome outcome = m_video->Add(unit);
    if (outcome && Frames() == 1) {
        m_codec = CodecName(*m_format, unit);
        SetUnitSize(unit.size());
    }
    return outcome;
}

std::uint64_t ClipMaker::SoundRoom() const {
    if (m_mostFrames == 0 || m_sound.empty()) {
        return std::numeric_limits<std::uint64_t>::max();
    }
    return m_sound.front()->SoundUntil(m_mostFrames) * m_sound.size();
}

Outcome ClipMaker::AddSound(std::string_view samples) {
    const std::size_t sample = m_parameters.wave.wBitsPerSample / 8U;
    const std::size_t channels = m_channels.size();
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

Outcome ClipMaker::FinishEssence() {
    m_room.reset();
    Outcome outcome = m_video->Finish(Frames());
    for (std::size_t i = 0; outcome && i < m_sound.size(); ++i) {
        outcome = m_sound[i]->Finish(Frames());
    }
    return outcome;
}

Outcome ClipMaker::WriteMetadata(const Relations& relations,
                                 std::unique_ptr<platform::FileWriter>& writer) const {
    RecordedClip clip = Described(m_parameters, *m_format);
    clip.name = m_name.name;
    clip.identifier = m_identifier;
    clip.codec = m_codec;
    clip.frames = Frames();
    clip.startTimecode += m_framesBefore;
    clip.video = {m_video->EssenceStart(), m_video->EssenceSize()};
    for (const auto& file : m_sound) {
        clip.sound.push_back({file->EssenceStart(), file->EssenceSize()});
    }
    clip.relations = relations;
    clip.startDate = m_startDate;
    clip.endDate = DateText();
    std::string xml;
    if (Outcome outcome = MakeMetadata(clip, xml); !outcome) {
        return outcome;
    }
    const std::string name = FileName(".XML");
    const std::string path = PathOf(*m_place.clip, name);
    bool same = false;
    platform::IoStatus status = m_place.clip->Create(name, writer);
    if (status) {
        status = WriteWhole(*writer, xml, same);
    }
    if (!status) {
        return Failure("write", path, status);
    }
    return same ? Outcome()
                : Failure("What the medium gives back of " + path + " is not what was written.");
}

Outcome ClipMaker::NameFiles(platform::FileWriter& metadata) {
    std::vector<std::pair<platform::Folder*, std::string>> named;
    Outcome outcome = m_video->Commit();
    if (outcome) {
        named.emplace_back(m_place.video.get(), m_video->Name());
    }
    for (std::size_t i = 0; outcome && i < m_sound.size(); ++i) {
        outcome = m_sound[i]->Commit();
        if (outcome) {
            named.emplace_back(m_place.sound.get(), m_sound[i]->Name());
        }
    }
    if (outcome) {
        const platform::IoStatus status = metadata.Commit();
        outcome = status
                      ? Outcome()
                      : Failure("name the file", PathOf(*m_place.clip, FileName(".XML")), status);
    }
    if (!outcome) {
        for (const auto& [folder, name] : named) {
            static_cast<void>(folder->RemoveFile(name));
        }
    }
    return outcome;
}

Outcome ClipMaker::Finish(const Relations& relations) {
    std::unique_ptr<platform::FileWriter> metadata;
    Outcome outcome = FinishEssence();
    if (outcome) {
        outcome = WriteMetadata(relations, metadata);
    }
    return outcome ? NameFiles(*metadata) : outcome;
}

} // namespace nqp2::worker
