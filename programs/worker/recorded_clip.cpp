// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/recorded_clip.h"

#include "platform/guard.h"
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

/// What a file has beside its frames, at most: a head of some 30 KiB, and at the end an index of
/// the frames.
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
    return platform::PathIn(folder.Path(), name);
}

/// Files of a clip that have their names, which go again unless all get theirs.
class NamedFiles {
public:
    NamedFiles() = default;
    NamedFiles(const NamedFiles&) = delete;
    NamedFiles& operator=(const NamedFiles&) = delete;
    ~NamedFiles() {
        for (const auto& [folder, name] : m_files) {
            const std::string& file = name;
            platform::Guarded([&, &in = folder] { static_cast<void>(in->RemoveFile(file)); });
        }
    }
    void Commit(platform::Folder& folder, EssenceFile& file) {
        file.Commit();
        m_files.emplace_back(&folder, file.Name());
    }
    void Keep() { m_files.clear(); }

private:
    std::vector<std::pair<platform::Folder*, std::string>> m_files;
};

} // namespace

void CheckMetadataTexts(const RecordingParameters& parameters) {
    static_cast<void>(
        MakeMetadata(Described(parameters, *FindRecordingFormat(parameters.codeType))));
}

ClipMaker::ClipMaker(const CardFolders& card, const RecordingParameters& parameters,
                     ClaimedName name, std::int64_t framesBefore)
    : m_parameters(parameters), m_format(FindRecordingFormat(parameters.codeType)),
      m_name(std::move(name)), m_identifier(platform::NewGuid()), m_framesBefore(framesBefore),
      m_channels(parameters.wave.nChannels), m_startDate(DateText()) {
    if (m_format->unitSize != 0) {
        SetUnitSize(m_format->unitSize);
    }
    OpenFolders(card);
    KeepRoomForEnd();
    CreateFiles();
}

std::string ClipMaker::FileName(const media::ClipFileKind& kind, std::size_t number) const {
    return platform::NameBytesFromText(media::FileNameOf(kind, m_name.name, number).View());
}

void ClipMaker::OpenFolders(const CardFolders& card) {
    const std::pair<const char*, std::unique_ptr<platform::Folder>*> wanted[] = {
        {media::kVideoFiles.folder.Bytes(), &m_folders.video},
        {media::kAudioFiles.folder.Bytes(), &m_folders.sound},
        {media::kMetadataFiles.folder.Bytes(), &m_folders.clip}};
    for (const auto& [name, folder] : wanted) {
        copy::Require(MakeBelow(*card.contents, name, *folder), "make or open",
                      PathOf(*card.contents, name));
        static_cast<void>((*folder)->RemoveAbandoned()); // litter is no reason not to record
    }
}

void ClipMaker::KeepRoomForEnd() {
    const std::string name = FileName(media::kVideoFiles);
    platform::IoStatus status = m_folders.video->Create(name, m_room);
    const std::uint64_t size = kEndOfVideo + m_channels.size() * kEndOfSound;
    const std::string block(std::size_t{64} << 10U, 'e'); // not zeros, which may take no room
    for (std::uint64_t at = 0; status && at < size; at += block.size()) {
        status = m_room->WriteAt(at, block);
    }
    copy::Require(status, "write", PathOf(*m_folders.video, name));
}

void ClipMaker::CreateFiles() {
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
    m_video = std::make_unique<EssenceFile>(*m_folders.video, FileName(media::kVideoFiles), format);
    const SoundFormat sound = {m_parameters.wave.wBitsPerSample, rate};
    for (std::size_t i = 0; i < m_channels.size(); ++i) {
        m_sound.push_back(std::make_unique<EssenceFile>(*m_folders.sound,
                                                        FileName(media::kAudioFiles, i), sound));
    }
}

void ClipMaker::SetUnitSize(std::size_t size) {
    const std::uint64_t most = m_parameters.mostFileBytes;
    const std::uint64_t frames = (most - std::min(most, kHeadOfVideo + kEndOfVideo)) / size;
    m_mostFrames = std::max<std::int64_t>(1, static_cast<std::int64_t>(frames));
}

void ClipMaker::AddVideo(std::string_view unit) {
    m_video->Add(unit);
    if (Frames() == 1) {
        m_codec = CodecName(*m_format, unit);
        SetUnitSize(unit.size());
    }
}

std::uint64_t ClipMaker::SoundRoom() const {
    if (m_mostFrames == 0 || m_sound.empty()) {
        return std::numeric_limits<std::uint64_t>::max();
    }
    return m_sound.front()->SoundUntil(m_mostFrames) * m_sound.size();
}

void ClipMaker::AddSound(std::string_view samples) {
    const std::size_t sample = m_parameters.wave.wBitsPerSample / 8U;
    const std::size_t channels = m_channels.size();
    for (std::size_t i = 0; i < channels; ++i) {
        m_channels[i].resize(samples.size() / channels);
        char* to = m_channels[i].data();
        for (std::size_t at = i * sample; at < samples.size(); at += sample * channels) {
            to = std::copy_n(samples.data() + at, sample, to);
        }
    }
    for (std::size_t i = 0; i < channels; ++i) {
        m_sound[i]->Add(m_channels[i]);
    }
}

void ClipMaker::FinishEssence() {
    m_room.reset();
    m_video->Finish(Frames());
    for (const auto& file : m_sound) {
        file->Finish(Frames());
    }
}

std::unique_ptr<platform::FileWriter> ClipMaker::WriteMetadata(const Relations& relations) const {
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
    const std::string xml = MakeMetadata(clip);
    const std::string name = FileName(media::kMetadataFiles);
    const std::string path = PathOf(*m_folders.clip, name);
    std::unique_ptr<platform::FileWriter> writer;
    copy::Require(m_folders.clip->Create(name, writer), "write", path);
    copy::Require(writer->WriteAt(0, xml), "write", path);
    copy::Require(writer->Flush(), "write", path);
    copy::CheckReadBack(*writer, path, 0, xml);
    return writer;
}

void ClipMaker::NameFiles(platform::FileWriter& metadata) {
    NamedFiles named;
    named.Commit(*m_folders.video, *m_video);
    for (const auto& file : m_sound) {
        named.Commit(*m_folders.sound, *file);
    }
    copy::Require(metadata.Commit(), "name the file",
                  PathOf(*m_folders.clip, FileName(media::kMetadataFiles)));
    named.Keep();
}

void ClipMaker::Finish(const Relations& relations) {
    FinishEssence();
    const std::unique_ptr<platform::FileWriter> metadata = WriteMetadata(relations);
    NameFiles(*metadata);
}

} // namespace nqp2::worker
