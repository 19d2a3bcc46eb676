// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/R8P2TransInfo.h"
#include "media/CodeType.h"
#include "platform/CArray.h"
#include "platform/CString.h"
#include "platform/MediaHeaders.h"
#include "worker/essence_file.h"
#include "worker/outcome.h"
#include "worker/recording_format.h"
#include "worker/recording_metadata.h"
#include "worker/recording_name.h"

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
    bool isWide = false; ///< of a standard-definition picture
    CArray<stu_R8PRelationClipInfo> related;
};

/// Fails for what Recording could not write.
Outcome CheckRecordingParameters(const RecordingParameters& parameters);

/// A clip that is being written onto a card from streams. All its files are in the making until
/// Finish; without it nothing remains. One thread at a time.
class Recording {
public:
    /// `expectedFrames`: 0 when nobody knows. Fails when they do not fit.
    static Outcome Start(const RecordingParameters& parameters, std::uint32_t expectedFrames,
                         eP2_VIDEO_STANDARD standard, std::unique_ptr<Recording>& recording);

    /// One access unit of video and interleaved PCM, each of which may be empty.
    Outcome Add(std::string_view video, std::string_view sound);
    /// Completes and checks all files and gives them their names, the metadata file last.
    Outcome Finish();

    /// Bytes of the access unit that came last; 0 before the first.
    [[nodiscard]] std::size_t LastUnitSize() const { return m_lastUnitSize; }

private:
    Recording(RecordingParameters parameters, std::string contents);
    Outcome CheckSpace(std::uint32_t frames, eP2_VIDEO_STANDARD standard) const;
    Outcome CreateFiles();
    Outcome PreparePlace(const char* folder, const std::string& suffix, std::string& path) const;
    Outcome AddVideo(std::string_view unit);
    Outcome AddSound(std::string_view samples);
    Outcome FinishEssence();
    Outcome WriteMetadata(std::unique_ptr<platform::FileWriter>& writer, std::string& path) const;
    Outcome NameFiles(platform::FileWriter& metadata, const std::string& metadataPath);

    RecordingParameters m_parameters;
    const RecordingFormat* m_format;
    std::string m_contents;
    RecordingName m_name;
    std::unique_ptr<EssenceFile> m_video;
    std::vector<std::unique_ptr<EssenceFile>> m_sound;
    std::vector<std::string> m_channels; ///< samples of each channel, taken apart
    std::size_t m_unitSize = 0;
    std::size_t m_lastUnitSize = 0;
    CString m_codec;
    CString m_startDate;
};

} // namespace nqp2::worker
