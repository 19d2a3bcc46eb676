// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CodeType.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/MediaHeaders.h"
#include "worker/clip_names.h"
#include "worker/essence_file.h"
#include "worker/recording_format.h"
#include "worker/recording_metadata.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::worker {

/// What a real-time export shall write, and where to.
struct RecordingParameters {
    eCodeType codeType = CT_DV25_50I;
    WAVEFORMATEX wave;
    CString cardRoot;
    CString clipName; ///< "": the next free one
    CString userClipName;
    std::uint32_t startTimecode = 0; ///< frame count
    bool dropFrame = false;
    bool isWide = false;                      ///< of a standard-definition picture
    Relations relations;                      ///< to clips of other recordings
    std::uint64_t mostFileBytes = 0xFFFFFFFF; ///< of FAT, which cards have: cameras split there
};

/// One clip of a recording in the making: its files are hidden until Finish, and gone with the
/// object without it. Everything throws a Failure. One thread at a time.
class ClipMaker {
public:
    /// `framesBefore`: of the recording's earlier clips.
    ClipMaker(const CardFolders& card, const RecordingParameters& parameters, ClaimedName name,
              std::int64_t framesBefore);

    /// One access unit, which fits the format. What fails to be written is not in the clip.
    void AddVideo(std::string_view unit);
    /// Interleaved whole samples.
    void AddSound(std::string_view samples);
    /// Completes and checks all files and gives them their names, the metadata file last.
    void Finish(const Relations& relations);

    [[nodiscard]] std::int64_t Frames() const { return m_video->Frames(); }
    /// Whether no frame has room any more.
    [[nodiscard]] bool IsFull() const { return m_mostFrames != 0 && Frames() >= m_mostFrames; }
    /// Bytes of interleaved sound that belong to the frames that have room.
    [[nodiscard]] std::uint64_t SoundRoom() const;
    /// Frames of the recording before the clip, and up to its end when it is full.
    [[nodiscard]] std::int64_t FramesBefore() const { return m_framesBefore; }
    [[nodiscard]] std::int64_t FramesUntilFull() const { return m_framesBefore + m_mostFrames; }
    [[nodiscard]] const CString& Name() const { return m_name.name; }
    /// How other clips refer to it.
    [[nodiscard]] RelatedClip Self() const { return {m_name.name, m_identifier, {}}; }

private:
    struct Folders {
        std::unique_ptr<platform::Folder> video;
        std::unique_ptr<platform::Folder> sound;
        std::unique_ptr<platform::Folder> clip;
    };

    /// Finds out how many frames of that size have room.
    void SetUnitSize(std::size_t size);
    void OpenFolders(const CardFolders& card);
    void CreateFiles();
    void KeepRoomForEnd();
    void FinishEssence();
    /// The metadata file, checked and still hidden.
    [[nodiscard]] std::unique_ptr<platform::FileWriter>
    WriteMetadata(const Relations& relations) const;
    void NameFiles(platform::FileWriter& metadata);
    [[nodiscard]] std::string FileName(const media::ClipFileKind& kind,
                                       std::size_t number = 0) const;

    RecordingParameters m_parameters;
    const RecordingFormat* m_format;
    ClaimedName m_name;
    GUID m_identifier;
    std::int64_t m_framesBefore;
    std::int64_t m_mostFrames = 0; ///< 0: not known yet
    Folders m_folders;
    std::unique_ptr<EssenceFile> m_video;
    std::vector<std::unique_ptr<EssenceFile>> m_sound;
    std::vector<std::string> m_channels; ///< samples of each channel, taken apart
    /// Room that the end of the files takes when the medium is full.
    std::unique_ptr<platform::FileWriter> m_room;
    CString m_codec;
    CString m_startDate;
};

/// Makes what the metadata of such a clip will say, as far as it is known before: fails for texts
/// that XML cannot hold.
void CheckMetadataTexts(const RecordingParameters& parameters);

} // namespace nqp2::worker
