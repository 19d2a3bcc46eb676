// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/messages.h"
#include "NQP2ParserU/CodeType.h"
#include "worker/progress_link.h"
#include "worker/recording.h"
#include "worker/transfer.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace nqp2::worker {

/// What a session does for each request: the message holds the arguments and receives the answer. A
/// request that cannot be served throws a Failure. Used by one thread.
class Operations {
public:
    explicit Operations(ProgressLink& progress) : m_progress(progress) {}

    void SetSystemType(bridge::SystemTypeMessage& message);
    void Import(bridge::ImportFileMessage& message);
    void GetUploadOffset(bridge::UploadOffsetMessage& message);
    void Export(bridge::ExportFileMessage& message);
    void Delete(bridge::TextPairMessage& message);
    void CreateIcon(bridge::IconMessage& message);
    void SetWriteBlockSize(bridge::ValueMessage& message);
    void CloseAllFile(bridge::ResultMessage& message);
    void GetSerialNumber(bridge::TextPairMessage& message);
    void GetLastError(bridge::ErrorTextMessage& message);
    void GetRecordedClips(bridge::ErrorTextMessage& message);
    void MakePictures(bridge::PicturesMessage& message);
    void DescribeMedia(bridge::MediaMessage& message);
    void Rewrap(bridge::RewrapMessage& message);
    void GetBaseClipInfo(bridge::BaseClipInfoMessage& message);
    void SetRecordingParameters(bridge::RTExportParamMessage& message);
    void SetRecordingAspect(bridge::ValueMessage& message);
    void StartRecording(bridge::ValueMessage& message);
    void AddData(bridge::AVDataMessage& message);
    void MakeBuffer(bridge::BufferMessage& message);
    void StopRecording(bridge::StopRTExportMessage& message);
    void RefuseValue(bridge::ValueMessage& message);
    void RefuseTexts(bridge::TextPairMessage& message);

    /// Remembers a sentence for GetLastError.
    void Fail(std::string sentence);

private:
    class Transfer;

    void Stop(bool keep);

    ProgressLink& m_progress;
    std::string m_lastError;
    eP2_VIDEO_STANDARD m_standard = VS_50I;
    std::size_t m_blockSize = copy::kDefaultBlock;
    std::uint32_t m_doneKiB = 0;
    std::uint32_t m_totalKiB = 0;
    std::optional<RecordingParameters> m_parameters;
    bool m_isWide = false;
    std::unique_ptr<Recording> m_recording;
    std::vector<CString> m_recordedClips; ///< of the last recording
    std::vector<unsigned char> m_buffer;
    std::vector<std::string> m_pictures; ///< of the last answer
};

/// Writes an answer to a buffer of that capacity and returns its length: 0, which the library takes
/// for a failure, for an unknown number, a damaged request, and running out of memory.
using Answer = std::function<std::int32_t(unsigned char* reply, std::int32_t capacity)>;

/// Runs the request of that number, whose failure becomes its answer and the session's last error.
/// Its bytes must stay until the answer is written.
Answer Dispatch(Operations& operations, std::uint32_t id, unsigned char* request,
                std::int32_t length) noexcept;

} // namespace nqp2::worker
